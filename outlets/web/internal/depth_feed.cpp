#include "outlets/web/internal/depth_feed.h"

#include <algorithm>
#include <utility>

#include "outlets/web/internal/live_messages.h"
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

DepthFeed::DepthFeed(const session::Session& session, std::string givenSensor)
    : session(session),
      sensor(std::move(givenSensor)),
      broker(session.getBroker()),
      view(std::make_unique<DepthView>(broker)) {}

std::optional<std::string> DepthFeed::next(const session::Snapshot& snapshot) {
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
  const auto depth = view->take();
  if (!depth) return std::nullopt;
  return depthMessage(sensor, painter.paint(*depth));
}

}  // namespace QV::outlets
