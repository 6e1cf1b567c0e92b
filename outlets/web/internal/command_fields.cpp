#include "outlets/web/internal/command_fields.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "session/internal/number_text.h"
#include "session/usage_error.h"

namespace QV::outlets {
namespace {

using nlohmann::json;

constexpr double kFarthest = 1e6;

std::string inQuotes(const std::string& text) {
  return "\"" + text + "\"";
}

}  // namespace

void CommandFields::checkNames(const json& command, const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    if (!command.contains(name)) throw session::UsageError(inQuotes(name) + ": missing");
  }
  for (const auto& [name, value] : command.items()) {
    if (name == "op" || std::ranges::count(names, name) > 0) continue;
    throw session::UsageError(json(name).dump() + ": no such field in this command");
  }
}

std::string CommandFields::sensor() const {
  const json& field = get("sensor");
  auto name = field.is_string() ? field.get<std::string>() : std::string();
  if (sensors.count(name) == 0) refuse("sensor", "the name of a sensor");
  return name;
}

bool CommandFields::flag(const char* name) const {
  const json& field = get(name);
  if (!field.is_boolean()) refuse(name, "true or false");
  return field.get<bool>();
}

double CommandFields::number(const char* name, double least, double most) const {
  const json& field = get(name);
  const double value = field.is_number() ? field.get<double>() : NAN;
  if (!(value >= least && value <= most)) {
    refuse(name, "a number from " + session::shortest(static_cast<float>(least)) + " to " +
                     session::shortest(static_cast<float>(most)));
  }
  return value;
}

Math::Position2D CommandFields::position() const {
  return {metres("x", shift.x), metres("y", shift.y)};
}

float CommandFields::metres(const char* name, double zero) const {
  return static_cast<float>(number(name, zero - kFarthest, zero + kFarthest) - zero);
}

std::string CommandFields::text(const char* name) const {
  if (!get(name).is_string()) refuse(name, "a text");
  return get(name).get<std::string>();
}

std::optional<robot::FaultKind> CommandFields::fault(const char* name) const {
  const json& field = get(name);
  if (field.is_null()) return std::nullopt;
  if (!field.is_string()) refuse(name, "the name of a fault or null");
  try {
    return robot::parseFaultKind(field.get<std::string>());
  } catch (const std::invalid_argument& error) {
    throw session::UsageError(error.what());
  }
}

void CommandFields::refuse(const char* name, const std::string& expected) const {
  throw session::UsageError(inQuotes(name) + ": " + expected + " expected, " + get(name).dump() +
                            " given");
}

}  // namespace QV::outlets
