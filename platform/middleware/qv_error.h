#pragma once

#include <stdexcept>
#include <string>

#include "platform/api.h"

namespace QV {

/**
 * An error of the middleware, with module, method and message. what() reads "module::method:
 * message". Copyable.
 */
class QV_API QVError : public std::runtime_error {
 public:
  QVError(const std::string& module, const std::string& method, const std::string& message);
  ~QVError() override;

  const std::string& getModule() const { return module; }
  const std::string& getMethod() const { return method; }
  const std::string& getMessage() const { return message; }

 private:
  std::string module;
  std::string method;
  std::string message;
};

}  // namespace QV
