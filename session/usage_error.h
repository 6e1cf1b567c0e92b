#pragma once

#include <stdexcept>

#include "platform/api.h"

namespace QV::session {

/**
 * A request of the user that can't be fulfilled; its text says what, where and what would be right.
 */
class QV_API UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace QV::session
