#pragma once

#include <stdexcept>

namespace QV::session {

/** What the user asked for can't be done as asked; its text says what, where and what would be
 * right. */
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace QV::session
