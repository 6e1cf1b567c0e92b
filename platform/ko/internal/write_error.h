#pragma once

#include <cerrno>
#include <string>
#include <system_error>

namespace ko::detail {

/** "FILE: can't be written: No space left on device", as errno says; a 0 gives no reason. */
inline std::string cannotWrite(const std::string& file) {
  const int reason = errno;
  const std::string text = file + ": can't be written";
  return reason == 0 ? text : text + ": " + std::generic_category().message(reason);
}

}  // namespace ko::detail
