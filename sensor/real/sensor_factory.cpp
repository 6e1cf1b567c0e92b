#include "sensor/real/sensor_factory.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace QV::sensor {
namespace {

std::string withName(std::string text, const std::string& name) {
  constexpr std::string_view kPlace = "{name}";
  for (std::size_t at = text.find(kPlace); at != std::string::npos;
       at = text.find(kPlace, at + name.size())) {
    text.replace(at, kPlace.size(), name);
  }
  return text;
}

}  // namespace

void SensorFactory::add(const Model::SensorKind& kind, Creator creator,
                        const std::string& failure) {
  if (!creator) {
    throw std::invalid_argument("sensor kind \"" + kind.name +
                                "\": a creator expected, none given");
  }
  kinds.add(kind);
  entries[kind.type] = {std::move(creator), failure};
}

SensorFactory::Sensors SensorFactory::create(const SensorOrder& order) const {
  const auto entry = entries.find(order.config.type);
  if (entry == entries.end()) return {};
  Sensors sensors = entry->second.creator(order);
  if (std::ranges::find(sensors, nullptr) != sensors.end()) {
    throw std::runtime_error("a sensor expected, the creator of kind \"" + order.kind.name +
                             "\" gave none (null)");
  }
  return sensors;
}

std::string SensorFactory::getFailure(const Model::SensorConfig& config) const {
  const auto entry = entries.find(config.type);
  if (entry == entries.end()) return {};
  return withName(entry->second.failure, config.name);
}

}  // namespace QV::sensor
