#include "outlets/web/internal/depth_frames.h"

#include <algorithm>
#include <utility>

namespace QV::outlets {
namespace {

constexpr std::chrono::milliseconds kPeriod{200};

bool isStarted(const session::Snapshot& snapshot, const std::string& name) {
  return std::any_of(snapshot.sensors.begin(), snapshot.sensors.end(),
                     [&name](const auto& sensor) { return sensor.name == name && sensor.started; });
}

}  // namespace

std::string findDepthSensor(const session::Session& session) {
  const Model::Robot* description = session.getDescription();
  if (!description) return {};
  for (const auto& [name, config] : description->sensorConfigs) {
    const Model::SensorKind* kind = session.getKinds().findType(config.type);
    if (kind && kind->isCamera() && session.getManager().isSensor(name)) return name;
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
