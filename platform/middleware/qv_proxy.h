#pragma once

#include <array>
#include <string>
#include <utility>
#include <vector>

#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>

#include "platform/api.h"
#include "platform/middleware/qv_module.h"
#include "platform/middleware/qv_value.h"

namespace QV {

class QVBroker;

/**
 * The caller's side of a module: calls its methods by name, on the caller's thread.
 *
 * - Units: none; arguments and results mean what the module's contract says.
 * - Special values: a method without a result gives the invalid QVValue.
 * - Lifetime: copyable, copies are interchangeable. It keeps neither the broker nor the module
 *   alive: a call after either is gone throws QVError at once. A module that is registered again
 *   under the name is reached again.
 * - Threads: thread-safe; no lock is held during a call.
 * - Errors: QVError for a missing module or method, for wrong arguments, for an exception of the
 *   method, and for a result that does not convert.
 *
 * The robot's speed (x, y in m/s, theta in rad/s), or what is wrong with the motion service:
 *
 *     try {
 *       const QV::QVProxy motion(robot.getBroker(), "QVMotion");
 *       std::cout << motion.call<std::vector<float>>("getRobotVelocity").at(0) << " m/s\n";
 *     } catch (const std::exception& error) {
 *       std::cerr << error.what() << '\n';
 *     }
 */
class QV_API QVProxy {
 public:
  /** Makes a proxy. Throws QVError for a null broker or an unknown module. */
  QVProxy(const boost::shared_ptr<QVBroker>& broker, const std::string& module);
  virtual ~QVProxy();
  QVProxy(const QVProxy&);
  QVProxy& operator=(const QVProxy&);

  const std::string& getModuleName() const { return module; }

  /** Calls a method and returns its result as an R, a type that QVValue::as() knows. Throws
   * QVError, see above. */
  template <typename R, typename... A>
  R call(const std::string& method, A&&... arguments) const {
    const std::array<QVValue, sizeof...(A)> values{QVValue(std::forward<A>(arguments))...};
    return xConvert<R>(method, xCall(method, values));
  }
  /** Calls a method and drops its result. */
  template <typename... A>
  void callVoid(const std::string& method, A&&... arguments) const {
    call<QVValue>(method, std::forward<A>(arguments)...);
  }
  /** Calls a method with a number of arguments that is known only at run time. */
  QVValue call(const std::string& method, const std::vector<QVValue>& arguments) const;

 private:
  QVValue xCall(const std::string& method, QVArguments arguments) const;
  [[noreturn]] void xRefuseResult(const std::string& method, const std::string& expected,
                                  const QVValue& given) const;

  template <typename R>
  R xConvert(const std::string& method, QVValue&& result) const {
    if constexpr (std::is_same_v<R, QVValue>) {
      return std::move(result);
    } else {
      try {
        return result.as<R>();
      } catch (const std::exception&) {
        xRefuseResult(method, QVValue::getTypeName<R>(), result);
      }
    }
  }

  boost::weak_ptr<QVBroker> broker;
  std::string module;
};

}  // namespace QV
