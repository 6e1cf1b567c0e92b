#include "sensor/hosting/last_trouble.h"

#include "sensor/core/internal/sensor_scope.h"

namespace QV::sensor {
namespace {

// Under a simulated clock a sensor that sleeps runs other services on its thread.
bool isOfTheLibrary(const std::string& category) {
  return category.starts_with("Navigation.") || category.starts_with("QVNavigation.");
}

}  // namespace

LastTrouble::LastTrouble()
    : sink(ko::log::Level::warning, [this](const ko::log::Record& record) { xNote(record); }) {}

LastTrouble::~LastTrouble() = default;

void LastTrouble::xNote(const ko::log::Record& record) {
  const std::string* sensorName = SensorScope::getCurrent();
  if (!sensorName || !isOfTheLibrary(record.category)) return;
  std::lock_guard<std::mutex> lock(mutex);
  lastOf[*sensorName] = record;
}

std::optional<ko::log::Record> LastTrouble::get(const std::string& sensorName) const {
  std::lock_guard<std::mutex> lock(mutex);
  const auto found = lastOf.find(sensorName);
  if (found == lastOf.end()) return std::nullopt;
  return found->second;
}

}  // namespace QV::sensor
