#include "sensor/simulation/internal/simulated_sensor.h"

#include <algorithm>
#include <cstddef>

#include "platform/navigation/occ_map_simulate_scan.h"

namespace QV::sensor {
namespace {

constexpr float kPointHeight = 0.5f;

}  // namespace

SimulatedSensor::SimulatedSensor(const std::string& name, const std::string& familyName,
                                 const Math::SensorFieldOfView2D& fieldOfView,
                                 const Math::Pose2D& sensorPose, bool useAllRays)
    : Sensor(name, familyName, fieldOfView), sensorPose(sensorPose), useAllRays(useAllRays) {}

void SimulatedSensor::setOccMap(QV::OccupancyMap* map) {
  occMap = map;
}

void SimulatedSensor::setPose2D(const Math::Pose2D& scanPose, const Math::Pose2D& referencePose) {
  poses.store({scanPose, referencePose});
}

std::vector<Math::MetricalData> SimulatedSensor::xGetData() const {
  std::vector<Math::MetricalData> result(1);
  Math::MetricalData& record = result.front();
  record.timestamp = ko::Clock::now();
  record.sensorName = name;
  record.familyName = familyName;
  record.fieldOfView = fieldOfView;

  const PosePair current = poses.load();
  record.sensorTransform = Math::transformFromPose2D(current.referencePose * sensorPose);

  // The rays are kept between reads, so that a scan allocates no memory for them.
  static thread_local std::vector<RangeReading> readings;
  if (const OccupancyMap* map = occMap) {
    occMapSimulateScan(*map, fieldOfView, current.scanPose, readings, OccupancyMap::kSolidAbove);
  } else {
    readings.clear();
  }
  if (useAllRays) {
    xAddAllRays(readings, current, record.points);
  } else {
    xAddNearestEcho(readings, record.points);
  }
  return result;
}

void SimulatedSensor::xAddNearestEcho(const std::vector<RangeReading>& readings,
                                      std::vector<Math::Position3D>& points) const {
  const auto nearest = std::min_element(
      readings.begin(), readings.end(),
      [](const RangeReading& a, const RangeReading& b) { return a.range < b.range; });
  if (nearest == readings.end() || nearest->status != 0) return;
  points.emplace_back(Math::Position2D(nearest->range, 0.0f), kPointHeight);
}

void SimulatedSensor::xFindDirections(const std::vector<RangeReading>& readings) const {
  directions.clear();
  for (const RangeReading& reading : readings) {
    directions.push_back(Math::Position2D::fromPolarCoordinates(1.0f, reading.angle));
  }
}

void SimulatedSensor::xAddAllRays(const std::vector<RangeReading>& readings, const PosePair& poses,
                                  std::vector<Math::Position3D>& points) const {
  // A field of view never changes, and with it its rays.
  if (directions.size() != readings.size()) xFindDirections(readings);
  const Math::Placement2D placement(poses.referencePose * Math::pinv(poses.scanPose));
  points.resize(readings.size());
  for (std::size_t i = 0; i < readings.size(); ++i) {
    const float range = readings[i].status == 0 ? readings[i].range : fieldOfView.maxRange;
    const Math::Position2D point(range * directions[i].x, range * directions[i].y);
    points[i] = Math::Position3D(placement * point, kPointHeight);
  }
}

}  // namespace QV::sensor
