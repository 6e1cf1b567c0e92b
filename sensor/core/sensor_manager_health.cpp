#include "platform/ko/log.h"
#include "sensor/core/internal/health_board.h"
#include "sensor/core/sensor_manager.h"

namespace QV::sensor {
namespace {

SensorHealth healthOfMissing(const ko::log::Record& trouble) {
  return {HealthState::failing, trouble.timestamp,
          "it could not be built: " + ko::log::onOneLine(trouble.message),
          "correct the description, then make a new manager", 1};
}

}  // namespace

std::optional<SensorHealth> SensorManager::getHealth(const std::string& sensorName) const {
  if (auto found = health->get(sensorName)) return found;
  if (const auto trouble = getLastTrouble(sensorName)) return healthOfMissing(*trouble);
  ko::log::warning("Navigation.SensorManager", "getHealth")
      << "Invalid name in getHealth: \"" << sensorName << "\"";
  return std::nullopt;
}

std::map<std::string, SensorHealth> SensorManager::getHealth() const {
  auto all = health->getAll();
  std::lock_guard<std::mutex> lock(troubleMutex);
  for (const auto& [name, trouble] : troubleOfMissing) {
    all.try_emplace(name, healthOfMissing(trouble));
  }
  return all;
}

void SensorManager::onHealthChanged(HealthCallback callback) {
  health->setCallback(std::move(callback));
}

void SensorManager::watchHealth(bool on) {
  health->setOn(on);
}

bool SensorManager::setHealthLimit(const HealthRule& rule) {
  const auto family = families.find(rule.name);
  if (rule.name.empty() || family != families.end()) {
    for (const std::string& name : rule.name.empty() ? getSensorList() : family->second) {
      health->setLimit(name, rule.limit, rule.value);
    }
    return true;
  }
  if (xIsSensor(rule.name)) {
    health->setLimit(rule.name, rule.limit, rule.value);
    return true;
  }
  ko::log::warning("Navigation.SensorManager", "setHealthLimit")
      << "Invalid name in setHealthLimit: \"" << rule.name << "\"";
  return false;
}

std::optional<double> SensorManager::getHealthLimit(const std::string& sensorName,
                                                    HealthLimit limit) const {
  return health->getLimit(sensorName, limit);
}

}  // namespace QV::sensor
