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
 * A service with a name, whose methods others call by name through a broker.
 *
 * - Lifetime: not copyable. Bind methods before the module is registered at a broker. What a method
 *   refers to must outlive the module.
 * - Threads: a method runs on the caller's thread, several at once.
 * - Errors: whatever standard exception a method throws reaches the caller as a QVError that names
 *   module and method; so does a wrong number or type of arguments.
 *
 * A motion service that knows the robot's speed:
 *
 *     const auto motion = boost::make_shared<QV::QVModule>("QVMotion");
 *     motion->bindMethod("getRobotVelocity", [] { return std::vector<float>{0.3f, 0.0f, 0.0f}; });
 */
class QV_API QVModule {
 public:
  explicit QVModule(const std::string& name);
  virtual ~QVModule();
  QVModule(const QVModule&) = delete;
  QVModule& operator=(const QVModule&) = delete;

  const std::string& getName() const { return name; }

  /** Offers `callable`, a function or a function object, under a name; arguments and result
   * travel as QVValue converts them. A name bound already, or a module registered already:
   * QVError. */
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
  template <typename C, typename R, typename... A>
  void bindMethod(const std::string& method, R (C::*member)(A...) const,
                  std::type_identity_t<const C>* self) {
    bindMethod(method,
               [self, member](A... a) -> R { return (self->*member)(std::forward<A>(a)...); });
  }

  /**
   * Runs a method; one without result answers the invalid value. An unknown method, a wrong number
   * or type of arguments, and whatever standard exception the method throws come as QVError.
   */
  QVValue call(std::string_view method, QVArguments arguments) const;

 private:
  friend class QVBroker;

  struct Method {
    std::vector<std::string> parameters;
    std::function<QVValue(const Method&, QVArguments)> run;
    std::string name = std::string();
  };

  // A string, an array or a value is lent to the method, the rest is converted.
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
  bool registered = false;
  std::map<std::string, Method, std::less<>> methods;
};

}  // namespace QV
