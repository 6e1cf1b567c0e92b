#include "ros2/recording/session_recorder.h"

#include <mutex>
#include <optional>
#include <utility>

#include "platform/ko/log.h"
#include "robot/world/virtual_robot.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/recording/internal/background_bag.h"
#include "ros2/recording/internal/camera_points.h"
#include "ros2/recording/internal/conversions.h"
#include "ros2/recording/internal/driver_topics.h"
#include "ros2/recording/internal/frame_topics.h"
#include "ros2/recording/internal/input_codec.h"
#include "ros2/recording/internal/record_topics.h"
#include "ros2/recording/internal/recording_facts.h"
#include "ros2/recording/internal/topic_names.h"
#include "ros2/recording/internal/viewers_description.h"
#include "ros2/recording/internal/world_topics.h"
#include "session/internal/session_listener.h"
#include "session/internal/session_parts.h"

namespace QV::ros2 {
namespace {

using Lock = std::lock_guard<std::mutex>;

// Who writes for ever at one moment does not fill the memory.
constexpr std::size_t kMostPending = 100'000;

std::set<std::string> mountedOf(const session::Session& session) {
  std::set<std::string> names;
  if (const auto* description = session.getDescription()) {
    for (const auto& [name, config] : description->sensorConfigs) names.insert(name);
  }
  return names;
}

std::uint8_t severityOf(ko::log::Level level) {
  constexpr std::uint8_t kSeverities[] = {10, 50, 40, 30, 20, 10};
  return kSeverities[static_cast<std::size_t>(level)];
}

rcl_interfaces::Log messageOf(const ko::log::Record& line) {
  rcl_interfaces::Log message;
  message.stamp = stampOf(line.timestamp);
  message.level = severityOf(line.level);
  message.name = line.category;
  message.msg = line.message;
  message.function = line.method;
  return message;
}

}  // namespace

class SessionRecorder::Impl : public session::SessionListener {
 public:
  Impl(const std::string& path, session::Session& session, const RecorderOptions& options)
      : options(options),
        path(path),
        session(session),
        names(session),
        writer(path, options.bag),
        inputs(writer.add<qv_msgs::Inputs>(kInputsTopic)),
        commands(writer.add<qv_msgs::Command>(kCommandsTopic)),
        lines(writer.add<rcl_interfaces::Log>("/rosout")),
        frames(writer, session, names),
        cameraPoints(writer, session),
        records(writer, names, mountedOf(session), &cameraPoints) {
    xWriteFacts();
    // Initial values in a virtual robot's memory are no measurements.
    const bool hasMeasured = robotOf(session).isRecording();
    if (hasMeasured) xAddDrivers();
    addListener(session, *this);
    if (!hasMeasured) xAddDrivers();
    if (auto* robot = robotOf(session).getVirtualRobot()) {
      for (const robot::Fault& fault : robot->getFaults()) onCommand(session::commandOf(fault));
    }
  }

  void onWrite(const std::string& key, const QVValue& value, bool raised) override {
    xAttempt([&](ko::Clock::time_point now) {
      if (now != pendingTime) xFlush(false);
      pendingTime = now;
      encoder.add(pending, key, value, raised);
      if (pending.types.size() > kMostPending) xFlush(false);
      if (drivers) drivers->note(key, value);
    });
  }

  void onImage(int camera, const QVValue& image) override {
    xAttempt([&](ko::Clock::time_point now) {
      xFlush(false);
      if (!drivers) return;
      drivers->writeImage(camera, image, now);
      cameraPoints.note(camera, image, now);
    });
  }

  void onStep(const robot::BodyStep& step) override {
    xAttempt([&](ko::Clock::time_point now) {
      if (now != pendingTime) xFlush(false);
      pendingTime = now;
      pending.velocity = {step.velocity.x, step.velocity.y, step.velocity.theta};
      xFlush(true);
      frames.writeStep(step, now);
    });
  }

  void onCommand(const session::SessionCommand& command) override {
    xAttempt([&](ko::Clock::time_point now) {
      xFlush(false);
      const qv_msgs::Command message{command.name,
                                     command.subscriber,
                                     {command.sensors.begin(), command.sensors.end()},
                                     command.on,
                                     command.values};
      writer.write(commands, logTimeOf(now), message);
    });
  }

  // A paused session shows the same again and again.
  void show(const session::Snapshot& snapshot) {
    if (std::exchange(lastShown, snapshot.time) == snapshot.time) return;
    xAttempt([&](ko::Clock::time_point) {
      xFlush(false);
      for (const auto& line : log.takeNew())
        writer.write(lines, logTimeOf(snapshot.time), messageOf(line));
      frames.writeClock(snapshot.time);
      if (!drivers)
        frames.writeStep({snapshot.pose, snapshot.pose, snapshot.velocity}, snapshot.time);
      records.write(snapshot);
    });
  }

  void finish() {
    if (isFinished) return;
    isFinished = true;
    removeListener(session, *this);
    xAttempt([&](ko::Clock::time_point) {
      xFlush(false);
      writer.close();
    });
  }

  const RecorderOptions options;
  const std::string path;
  session::Session& session;
  std::atomic<bool> hasFailed{false};

 private:
  template <typename Write>
  void xAttempt(const Write& write) {
    std::string error;
    {
      const Lock lock(mutex);
      if (hasFailed) return;
      try {
        return write(ko::Clock::now());
      } catch (const std::exception& exception) {
        hasFailed = true;
        error = exception.what();
      }
    }
    ko::log::error("Recording", "write")
        << "recording stopped: " << error << "; the session continues";
  }

  // Inputs of a past time, or up to the end of the body's step.
  void xFlush(bool stepped) {
    if (!stepped && pending.keys.empty()) return;
    pending.stepped = stepped;
    writer.write(inputs, logTimeOf(pendingTime), pending);
    if (drivers) drivers->write(pendingTime);
    pending = {};
  }

  void xAddDrivers() {
    const auto* robot = session.getDescription();
    if (robot) drivers.emplace(writer, *robot, session.getKinds(), names);
  }

  void xWriteFacts() {
    writer.addMetadata(RecordingFacts::kName, factsOf(session).toValues());
    const auto world = robotOf(session).getWorldFacts();
    if (!world.empty()) writer.addMetadata(RecordingFacts::kWorldName, world);
    xWriteDescription();
    if (const auto map = session.getMap()) xWriteMap(*map);
  }

  void xWriteDescription() {
    const std::string exact = writeDescription(writer, session, names);
    if (exact == describeForViewers(exact)) return;
    writer.addAttachment(
        {kExactDescription, "application/xml", 0, 0, Bytes(exact.begin(), exact.end())});
  }

  void xWriteMap(const OccupancyMap& map) {
    const nav_msgs::OccupancyGrid grid = writeMap(writer, map, names);
    if (session.getFrame() != session::Frame::map) return;
    const OccupancyMap read = mapOf(grid);
    if (read.getCells() == map.getCells() && read.getOrigin() == map.getOrigin()) return;
    writer.addAttachment(exactMapOf(map));
  }

  const FrameNames names;
  std::mutex mutex;
  BackgroundBag writer;
  const std::uint16_t inputs;
  const std::uint16_t commands;
  const std::uint16_t lines;
  FrameTopics frames;
  CameraPoints cameraPoints;
  RecordTopics records;
  std::optional<DriverTopics> drivers;
  ko::log::LogRing log;
  InputEncoder encoder;
  qv_msgs::Inputs pending;
  ko::Clock::time_point pendingTime;
  std::optional<ko::Clock::time_point> lastShown;
  bool isFinished = false;
};

SessionRecorder::SessionRecorder(const std::string& path, session::Session& session,
                                 const RecorderOptions& options)
    : impl(std::make_unique<Impl>(path, session, options)) {}

SessionRecorder::~SessionRecorder() {
  impl->finish();
}

session::Demand SessionRecorder::getDemand() const {
  if (!impl->options.wantsAll || impl->hasFailed) return {};
  return {{RecorderOptions::kSubscriber, impl->session.getManager().getSensorList()}};
}

void SessionRecorder::show(const session::Snapshot& snapshot) {
  impl->show(snapshot);
}

void SessionRecorder::finish() {
  impl->finish();
}

bool SessionRecorder::hasFailed() const {
  return impl->hasFailed;
}

}  // namespace QV::ros2
