#include "session/internal/sensor_meaning.h"

#include "sensor/real/real_sensor_manager.h"
#include "sensor/simulation/internal/simulated_sensor.h"

namespace QV::session {

const Model::SensorKind* findKind(const sensor::SensorManager& manager, const std::string& name,
                                  const Model::SensorKinds& kinds) {
  if (const auto* real = dynamic_cast<const sensor::RealSensorManager*>(&manager)) {
    if (const Model::SensorKind* kind = real->findKind(name)) return kind;
  }
  const auto found = manager.getSensorPtr(name);
  const bool isSimulated = dynamic_cast<const sensor::SimulatedSensor*>(found.get()) != nullptr;
  return !found || isSimulated ? nullptr : kinds.findFamily(found->getFamilyName());
}

std::string findSensorOf(const Model::SensorConfig& config, const Model::SensorKinds& kinds,
                         const sensor::SensorManager& manager) {
  const Model::SensorKind* kind = kinds.findType(config.type);
  if (!kind) return {};
  const auto sensor = manager.getSensorPtr(config.name);
  if (sensor && sensor->getFamilyName() == kind->family) return config.name;
  if (!kind->standsForAll) return {};
  const auto names = manager.getSensorsByFamily(kind->family);
  return names.empty() ? std::string() : *names.begin();
}

Model::PointMeaning findMeaning(const sensor::SensorManager& manager, const std::string& name,
                                const Model::SensorKind* kind) {
  if (kind) return kind->points;
  const auto found = manager.getSensorPtr(name);
  const auto* simulated = dynamic_cast<const sensor::SimulatedSensor*>(found.get());
  const bool isArc = simulated && !simulated->reportsAllRays();
  return isArc ? Model::PointMeaning::arc : Model::PointMeaning::scan;
}

}  // namespace QV::session
