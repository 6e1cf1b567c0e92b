#pragma once

#include <stdexcept>

#include "platform/api.h"

namespace QV::session {

/** What the user asked for can't be done as asked; its text says what, where and what would be
 * right. */
class QV_API UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace QV::session
