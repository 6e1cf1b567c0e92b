#include <memory>

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

HealthBoard& SensorManager::xGetHealth() const {
  if (HealthBoard* const known = health) return *known;
  auto fresh = std::make_unique<HealthBoard>(sensors);
  HealthBoard* known = nullptr;
  return health.compare_exchange_strong(known, fresh.get()) ? *fresh.release() : *known;
}

std::optional<SensorHealth> SensorManager::getHealth(const std::string& sensorName) const {
  if (auto found = xGetHealth().get(sensorName)) return found;
  if (const auto trouble = getLastTrouble(sensorName)) return healthOfMissing(*trouble);
  ko::log::warning("Navigation.SensorManager", "getHealth")
      << "Invalid name in getHealth: \"" << sensorName << "\"";
  return std::nullopt;
}

std::map<std::string, SensorHealth> SensorManager::getHealth() const {
  auto all = xGetHealth().getAll();
  std::lock_guard<std::mutex> lock(troubleMutex);
  for (const auto& [name, trouble] : troubleOfMissing) {
    all.try_emplace(name, healthOfMissing(trouble));
  }
  return all;
}

void SensorManager::onHealthChanged(HealthCallback callback) {
  xGetHealth().setCallback(std::move(callback));
}

void SensorManager::watchHealth(bool on) {
  xGetHealth().setOn(on);
}

bool SensorManager::setHealthLimit(const HealthRule& rule) {
  const auto family = families.find(rule.name);
  if (rule.name.empty() || family != families.end()) {
    for (const std::string& name : rule.name.empty() ? getSensorList() : family->second) {
      xGetHealth().setLimit(name, rule.limit, rule.value);
    }
    return true;
  }
  if (xIsSensor(rule.name)) {
    xGetHealth().setLimit(rule.name, rule.limit, rule.value);
    return true;
  }
  ko::log::warning("Navigation.SensorManager", "setHealthLimit")
      << "Invalid name in setHealthLimit: \"" << rule.name << "\"";
  return false;
}

std::optional<double> SensorManager::getHealthLimit(const std::string& sensorName,
                                                    HealthLimit limit) const {
  return xGetHealth().getLimit(sensorName, limit);
}

}  // namespace QV::sensor
