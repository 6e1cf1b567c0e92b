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

Model::PointMeaning findMeaning(const sensor::SensorManager& manager, const std::string& name,
                                const Model::SensorKind* kind) {
  if (kind) return kind->points;
  const auto found = manager.getSensorPtr(name);
  const auto* simulated = dynamic_cast<const sensor::SimulatedSensor*>(found.get());
  const bool isArc = simulated && !simulated->reportsAllRays();
  return isArc ? Model::PointMeaning::arc : Model::PointMeaning::scan;
}

}  // namespace QV::session
