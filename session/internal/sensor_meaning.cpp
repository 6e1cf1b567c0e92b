#include "session/internal/sensor_meaning.h"

#include "sensor/simulation/internal/simulated_sensor.h"

namespace QV::session {

bool isSimulated(const sensor::Sensor& sensor) {
  return dynamic_cast<const sensor::SimulatedSensor*>(&sensor) != nullptr;
}

Model::PointMeaning meaningOf(const sensor::Sensor& sensor, const Model::SensorKind* kind) {
  if (kind) return kind->points;
  const auto* simulated = dynamic_cast<const sensor::SimulatedSensor*>(&sensor);
  const bool isArc = simulated && !simulated->reportsAllRays();
  return isArc ? Model::PointMeaning::arc : Model::PointMeaning::scan;
}

}  // namespace QV::session
