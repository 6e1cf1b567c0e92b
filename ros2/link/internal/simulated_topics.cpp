#include "ros2/link/internal/simulated_topics.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "ros2/recording/internal/conversions.h"
#include "ros2/recording/internal/range_messages.h"
#include "ros2/recording/internal/topic_names.h"

namespace QV::ros2 {
namespace {

using Model::PointMeaning;

constexpr float kNoEcho = std::numeric_limits<float>::infinity();
constexpr char kBumper[] = "Bumper";
constexpr float kWholeTurn = 2.0f * std::numbers::pi_v<float>;

/** Misses end at the maximum range, up to rounding. */
float rangeOfRay(const Math::SensorFieldOfView2D& view, const Math::Position3D& end) {
  // Points are as high as they are drawn.
  const float range = std::hypot(end.x, end.y);
  return range < view.maxRange * (1.0f - 1e-5f) ? std::max(range, view.minRange) : kNoEcho;
}

sensor_msgs::LaserScan scanIn(const Math::MetricalData& record) {
  auto view = record.fieldOfView;
  const auto rays = static_cast<float>(record.points.size());
  const bool isFull = view.angularRange >= kWholeTurn && rays > 1.0f;
  // In a full turn the step from the last ray to the first equals the others.
  if (isFull) view.angularRange = kWholeTurn * (rays - 1.0f) / rays;
  auto scan = scanOf(view, record.points.size());
  if (isFull) {
    scan.angle_min = -0.5f * kWholeTurn;
    scan.angle_max = scan.angle_min + view.angularRange;
  }
  for (const auto& point : record.points) scan.ranges.push_back(rangeOfRay(view, point));
  return scan;
}

sensor_msgs::Range echoIn(const Math::MetricalData& record, bool noEchoIsInfinite) {
  const auto& view = record.fieldOfView;
  const bool hasEcho = !record.points.empty();
  if (record.familyName == kBumper) return contactOf(view, hasEcho);
  auto range = rangeOf(view);
  range.range = noEchoIsInfinite ? kNoEcho : view.maxRange;
  if (hasEcho) range.range = record.points.front().x;
  return range;
}

}  // namespace

SimulatedTopics::SimulatedTopics(MessageSink& sink, session::Session& session,
                                 const FrameNames& names, bool noEchoIsInfinite)
    : sink(sink), frame(names.ofBase()), noEchoIsInfinite(noEchoIsInfinite) {
  if (session.getFrame() != session::Frame::map) return;
  for (const session::SensorState& sensor : session.look().sensors) {
    const std::string& name = sensor.name;
    if (sensor.points == PointMeaning::scan) {
      topics[name] = sink.add<sensor_msgs::LaserScan>(driverTopicOf(name, "scan"), {}, name);
    } else if (sensor.points == PointMeaning::arc) {
      const char* const what = sensor.family == kBumper ? "contact" : "range";
      topics[name] = sink.add<sensor_msgs::Range>(driverTopicOf(name, what), {}, name);
    }
  }
}

void SimulatedTopics::write(const session::Snapshot& snapshot) {
  for (const session::SensorState& sensor : snapshot.sensors) {
    const auto topic = topics.find(sensor.name);
    if (topic == topics.end() || !sink.isRead(topic->second)) continue;
    for (const auto& record : sensor.records) {
      if (sensor.points == PointMeaning::scan) {
        xWrite(topic->second, scanIn(record), record.timestamp);
      } else {
        xWrite(topic->second, echoIn(record, noEchoIsInfinite), record.timestamp);
      }
    }
  }
}

template <typename Message>
void SimulatedTopics::xWrite(std::uint16_t topic, Message message, ko::Clock::time_point time) {
  message.header = headerOf(time, frame);
  sink.write(topic, logTimeOf(time), message);
}

}  // namespace QV::ros2
