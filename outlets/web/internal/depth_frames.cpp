#include "outlets/web/internal/depth_frames.h"

#include <algorithm>
#include <utility>

#include "sensor/perception/sensor_3d.h"

namespace QV::outlets {
namespace {

constexpr std::chrono::milliseconds kPeriod{200};

bool isStarted(const session::Snapshot& snapshot, const std::string& name) {
  return std::any_of(snapshot.sensors.begin(), snapshot.sensors.end(),
                     [&name](const auto& sensor) { return sensor.name == name && sensor.started; });
}

}  // namespace

std::string findDepthSensor(sensor::SensorManager& manager) {
  for (const std::string& name : manager.getSensorList()) {
    if (dynamic_cast<sensor::Sensor3D*>(manager.getSensorPtr(name).get())) return name;
  }
  return {};
}

DepthFrames::DepthFrames(const session::Session& session, std::string givenSensor)
    : session(session),
      sensor(std::move(givenSensor)),
      broker(session.getBroker()),
      view(std::make_unique<DepthView>(broker)) {}

std::optional<cv::Mat_<std::uint16_t>> DepthFrames::next(const session::Snapshot& snapshot) {
  if (session.getBroker() != broker) {
    broker = session.getBroker();
    view = std::make_unique<DepthView>(broker);
  }
  if (!isStarted(snapshot, sensor)) {
    rest();
    return std::nullopt;
  }
  const auto now = std::chrono::steady_clock::now();
  if (now < due) return std::nullopt;
  due = std::max(due + kPeriod, now);
  return view->take();
}

}  // namespace QV::outlets
