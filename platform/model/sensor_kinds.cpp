#include "platform/model/sensor_kinds.h"

#include <algorithm>
#include <cctype>
#include <numbers>
#include <stdexcept>

namespace QV::Model {
namespace {

constexpr double kFullTurn = 2.0 * std::numbers::pi;
constexpr double kFarthest = 1000.0;
constexpr std::size_t kMostKeys = 20'000;

std::vector<PropertyRule> rangeProperties(std::vector<PropertyRule> others = {}) {
  std::vector<PropertyRule> rules = {
      {"minimumDetectionDistance", Quantity::metres, true, 0.0, kFarthest},
      {"maximumDetectionDistance", Quantity::metres, true, 0.0, kFarthest},
      {"horizontalAngularRange", Quantity::radians, true, 0.0, kFullTurn}};
  rules.insert(rules.end(), others.begin(), others.end());
  return rules;
}

PropertyRule needed(PropertyRule rule) {
  rule.isRequired = rule.isNeededToMake = true;
  return rule;
}

std::vector<PropertyRule> laserProperties(const std::vector<PropertyRule>& others) {
  std::vector<PropertyRule> rules =
      rangeProperties({needed({"regIndex", Quantity::number, true, 1.0, 255.0}),
                       needed({"setOperationMode", Quantity::actuator}),
                       needed({"getOperationMode", Quantity::memoryKey, true, 0.0, 0.0, true}),
                       needed({"timestamp", Quantity::memoryKey})});
  rules.push_back({"messageType", Quantity::text});
  for (const PropertyRule& rule : others) rules.push_back(needed(rule));
  return rules;
}

SensorKind touch() {
  SensorKind kind = {2, "Touch", "Touch", PointMeaning::touch};
  kind.silence = Silence::always;
  kind.hasRate = false;
  kind.standsForAll = true;
  kind.properties = {{"horizontalAngularRange", Quantity::radians, false, 0.0, kFullTurn}};
  return kind;
}

SensorKind depthCamera() {
  SensorKind kind = {4, "DepthCamera", "Asus", PointMeaning::sighting};
  kind.standsForAll = true;
  kind.properties =
      rangeProperties({{"verticalAngularRange", Quantity::radians, true, 0.0, kFullTurn},
                       {"modelCode", Quantity::number},
                       {"cameraName", Quantity::text}});
  return kind;
}

SensorKind laser(int type, const std::string& name, PointMeaning points,
                 const std::vector<PropertyRule>& others = {}) {
  SensorKind kind = {type, name, name, points};
  kind.properties = laserProperties(others);
  kind.keys = {2, kMostKeys, 2, "x and y of each point (m)", KeyContent::coordinates};
  return kind;
}

SensorKind sonar() {
  SensorKind kind = {9, "Sonar", "Sonar", PointMeaning::arc};
  kind.leavesOutMisses = false;
  kind.properties = rangeProperties();
  kind.keys = {1, 1, 1, "range (m)", KeyContent::range};
  return kind;
}

SensorKind blindZone() {
  SensorKind kind = {14, "BlindZone", "BlindZone", PointMeaning::zone};
  kind.silence = Silence::whileMoving;
  kind.leavesOutMisses = false;
  kind.properties = rangeProperties();
  kind.keys = {1, 1, 1, "1: something is there, 0: nothing is", KeyContent::presence};
  return kind;
}

std::vector<SensorKind> standardRows() {
  return {touch(),
          depthCamera(),
          laser(8, "Laser", PointMeaning::scan),
          sonar(),
          blindZone(),
          laser(16, "HoleLaser", PointMeaning::floor,
                {{"inclination", Quantity::memoryKey}, {"status", Quantity::memoryKey}}),
          laser(17, "Shovel", PointMeaning::scan)};
}

template <typename Condition>
const SensorKind* findIf(const std::vector<SensorKind>& kinds, Condition condition) {
  const auto found = std::find_if(kinds.begin(), kinds.end(), condition);
  return found == kinds.end() ? nullptr : &*found;
}

}  // namespace

const SensorKinds& SensorKinds::standard() {
  static const SensorKinds standard = [] {
    SensorKinds kinds;
    for (const SensorKind& kind : standardRows()) kinds.add(kind);
    return kinds;
  }();
  return standard;
}

void SensorKinds::add(const SensorKind& kind) {
  if (kind.type <= 0 || findType(kind.type)) {
    throw std::invalid_argument("sensor kind \"" + kind.name +
                                "\": a type of its own above 0 expected, " +
                                std::to_string(kind.type) + " given");
  }
  // A description may say a number instead.
  const bool isWord = std::isalpha(static_cast<unsigned char>(kind.name.c_str()[0]));
  if (!isWord || kind.family.empty() || findName(kind.name)) {
    throw std::invalid_argument(
        "sensor kind " + std::to_string(kind.type) +
        ": a name of its own that begins with a letter and a family expected, \"" + kind.name +
        "\" and \"" + kind.family + "\" given");
  }
  const auto place = std::find_if(kinds.begin(), kinds.end(), [&kind](const SensorKind& other) {
    return other.type > kind.type;
  });
  kinds.insert(place, kind);
}

const SensorKind* SensorKinds::findType(int type) const {
  return findIf(kinds, [type](const SensorKind& kind) { return kind.type == type; });
}

const SensorKind* SensorKinds::findName(const std::string& name) const {
  return findIf(kinds, [&name](const SensorKind& kind) { return kind.name == name; });
}

const SensorKind* SensorKinds::findFamily(const std::string& family) const {
  return findIf(kinds, [&family](const SensorKind& kind) { return kind.family == family; });
}

}  // namespace QV::Model
