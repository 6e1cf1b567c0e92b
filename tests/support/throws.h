#pragma once

#include <exception>
#include <string>

namespace QV::test {

/** The text of the standard exception that `run` throws, or nothing. */
template <typename F>
std::string errorOf(F run) {
  try {
    run();
  } catch (const std::exception& error) {
    return error.what();
  }
  return std::string();
}

}  // namespace QV::test

namespace QV {
using test::errorOf;
}
