#include "sensor/real/sensor_factory.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <boost/algorithm/string/replace.hpp>

namespace QV::sensor {

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
  return boost::replace_all_copy(entry->second.failure, "{name}", config.name);
}

}  // namespace QV::sensor
