#pragma once

#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/api.h"
#include "platform/middleware/qv_value.h"

namespace QV {

using QVArguments = std::span<const QVValue>;

/**
 * A service with a name, whose methods others call by name through a broker. Make a module, bind
 * its methods, and register it at a QVBroker. Callers then reach it through a QVProxy, which needs
 * the names only.
 *
 * - Units: none; arguments and results mean what the module's contract says.
 * - Types: a parameter is of a type that QVValue::as() knows, by value or const reference; its
 *   argument is converted. A result is of a type that makes a QVValue, or void.
 * - Special values: a method without a result answers the invalid value.
 * - Lifetime: not copyable. Bind methods before the module is registered at a broker. Objects that
 *   a method refers to must outlive the module. A module that is unregistered during a call lives
 *   until that call ends.
 * - Threads: a method runs on the caller's thread, several at once. Guard the data that it shares.
 * - Errors: a standard exception of a method reaches the caller as a QVError with module and
 *   method. So does a wrong number or type of arguments. Other exceptions reach the caller as they
 *   are.
 *
 * A motion service that knows the robot's speed (x, y in m/s, theta in rad/s):
 *
 *     const auto motion = boost::make_shared<QV::QVModule>("QVMotion");
 *     motion->bindMethod("getRobotVelocity", [] { return std::vector<float>{0.3f, 0.0f, 0.0f}; });
 *     const auto broker = QV::QVBroker::create();
 *     broker->registerModule(motion);
 *     std::cout << motion->call("getRobotVelocity", {}).toText() << '\n';
 */
class QV_API QVModule {
 public:
  /** Makes a module without methods. `name` is the name at the broker: "QVMotion". */
  explicit QVModule(const std::string& name);
  virtual ~QVModule();
  QVModule(const QVModule&) = delete;
  QVModule& operator=(const QVModule&) = delete;

  const std::string& getName() const { return name; }

  /** Offers `callable`, a function or a function object, under a name. Arguments and result are
   * converted by QVValue. Throws QVError if the name is bound or the module is registered already.
   */
  template <typename F>
  void bindMethod(const std::string& method, F callable) {
    using Signature = decltype(std::function(callable));
    xBind(method, xMakeMethod(std::move(callable), std::type_identity<Signature>()));
  }
  /** Offers a member function of `self`, which must outlive the module. */
  template <typename C, typename R, typename... A>
  void bindMethod(const std::string& method, R (C::*member)(A...), std::type_identity_t<C>* self) {
    bindMethod(method,
               [self, member](A... a) -> R { return (self->*member)(std::forward<A>(a)...); });
  }
  /** Offers a const member function of `self`, which must outlive the module. */
  template <typename C, typename R, typename... A>
  void bindMethod(const std::string& method, R (C::*member)(A...) const,
                  std::type_identity_t<const C>* self) {
    bindMethod(method,
               [self, member](A... a) -> R { return (self->*member)(std::forward<A>(a)...); });
  }

  /** Runs a method and returns its result, the invalid value without one. Throws QVError for an
   * unknown method, a wrong number or type of arguments, or a standard exception of the method. */
  QVValue call(std::string_view method, QVArguments arguments) const;

 private:
  friend class QVBroker;

  /** A bound method: what callable it runs, and the names of its parameters' types for errors. */
  struct Method {
    std::vector<std::string> parameters;
    std::function<QVValue(const Method&, QVArguments)> run;
    std::string name = std::string();
  };

  // A string, an array or a value is passed by reference, other types are converted.
  template <typename A>
  static decltype(auto) xToArgument(const QVValue& value) {
    using T = std::remove_cvref_t<A>;
    if constexpr (std::is_same_v<T, QVValue>) {
      return static_cast<const QVValue&>(value);
    } else if constexpr (std::is_same_v<T, std::string>) {
      return value.toString();
    } else if constexpr (std::is_same_v<T, QVValue::Array>) {
      return value.toArray();
    } else {
      return value.as<T>();
    }
  }

  /** Converts the arguments, or throws the QVError that names what the method expects. */
  template <typename... A, std::size_t... I>
  auto xUnpack(const Method& method, QVArguments arguments, std::index_sequence<I...>) const {
    using Unpacked = std::tuple<decltype(xToArgument<A>(arguments[I]))...>;
    if (arguments.size() != sizeof...(A)) xRefuse(method, arguments);
    try {
      return Unpacked(xToArgument<A>(arguments[I])...);
    } catch (const std::exception&) {
      xRefuse(method, arguments);
    }
  }

  /** Wraps a callable: converts the arguments, calls it, and makes a value of its result. */
  template <typename F, typename R, typename... A>
  Method xMakeMethod(F callable, std::type_identity<std::function<R(A...)>>) const {
    auto run = [this, callable = std::move(callable)](
                   const Method& method, [[maybe_unused]] QVArguments arguments) -> QVValue {
      auto unpacked = xUnpack<A...>(method, arguments, std::index_sequence_for<A...>());
      if constexpr (std::is_void_v<R>) {
        std::apply(callable, std::move(unpacked));
        return QVValue();
      } else {
        return std::apply(callable, std::move(unpacked));
      }
    };
    return {{QVValue::getTypeName<std::remove_cvref_t<A>>()...}, std::move(run)};
  }

  void xBind(const std::string& method, Method bound);
  [[noreturn]] void xRefuse(const Method& method, QVArguments given) const;

  const std::string name;
  /** True once a broker has it: from then on the methods never change, so calls take no lock. */
  bool registered = false;
  std::map<std::string, Method, std::less<>> methods;
};

}  // namespace QV
