#include "platform/middleware/qv_error.h"

namespace QV {

QVError::QVError(const std::string& module, const std::string& method, const std::string& message)
    : std::runtime_error(module + "::" + method + ": " + message),
      module(module),
      method(method),
      message(message) {}

QVError::~QVError() = default;

}  // namespace QV
