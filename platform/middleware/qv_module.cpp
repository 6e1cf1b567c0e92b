#include "platform/middleware/qv_module.h"

#include "platform/middleware/qv_error.h"

namespace QV {
namespace {

std::string listOf(const std::vector<std::string>& types) {
  std::string result = "(";
  for (const std::string& type : types) {
    if (result.size() > 1) result += ", ";
    result += type;
  }
  return result + ")";
}

}  // namespace

QVModule::QVModule(const std::string& name) : name(name) {}

QVModule::~QVModule() = default;

QVValue QVModule::call(std::string_view method, QVArguments arguments) const {
  const auto found = methods.find(method);
  if (found == methods.end()) throw QVError(name, std::string(method), "no such method");
  try {
    return found->second.run(found->second, arguments);
  } catch (const QVError&) {
    throw;
  } catch (const std::exception& error) {
    throw QVError(name, std::string(method), error.what());
  }
}

void QVModule::xBind(const std::string& method, Method bound) {
  // Calls look methods up without a lock.
  if (registered) throw QVError(name, "bindMethod", method + ": the module is registered already");
  bound.name = method;
  if (!methods.try_emplace(method, std::move(bound)).second) {
    throw QVError(name, "bindMethod", method + " is bound already");
  }
}

void QVModule::xRefuse(const Method& method, QVArguments given) const {
  std::vector<std::string> types;
  for (const QVValue& value : given) types.push_back(QVValue::getTypeName(value.getType()));
  throw QVError(
      name, method.name,
      "arguments " + listOf(method.parameters) + " expected, " + listOf(types) + " given");
}

}  // namespace QV
