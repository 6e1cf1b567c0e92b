#include "platform/model/sensor_kind.h"

#include <algorithm>
#include <locale>
#include <sstream>

namespace QV::Model {
namespace {

const PropertyRule* findIn(const std::vector<PropertyRule>& rules, const std::string& name) {
  const auto found = std::ranges::find(rules, name, &PropertyRule::name);
  return found == rules.end() ? nullptr : &*found;
}

}  // namespace

const char* nameOf(Quantity quantity) {
  switch (quantity) {
    case Quantity::text:
      return "a text";
    case Quantity::number:
      return "a number";
    case Quantity::metres:
      return "metres";
    case Quantity::radians:
      return "radians";
    case Quantity::seconds:
      return "seconds";
    case Quantity::memoryKey:
      return "a memory key";
    case Quantity::actuator:
      return "an actuator";
  }
  return "";
}

bool isNumber(Quantity quantity) {
  return quantity == Quantity::number || quantity == Quantity::metres ||
         quantity == Quantity::radians || quantity == Quantity::seconds;
}

std::string PropertyRule::toText() const {
  if (!isNumber(quantity) || !hasLimits()) return nameOf(quantity);
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << nameOf(quantity) << " from " << least << " to " << most;
  return text.str();
}

const std::vector<PropertyRule>& commonProperties() {
  static const std::vector<PropertyRule> common = {
      {"topic", Quantity::text},
      {"frame", Quantity::text},
      {"period", Quantity::seconds, false, 0.001, 3600.0},
      {"limits", Quantity::text}};
  return common;
}

const PropertyRule* SensorKind::findProperty(const std::string& property) const {
  const PropertyRule* own = findIn(properties, property);
  return own ? own : findIn(commonProperties(), property);
}

bool SensorKind::isCamera() const {
  return points == PointMeaning::sighting && findProperty("verticalAngularRange");
}

}  // namespace QV::Model
