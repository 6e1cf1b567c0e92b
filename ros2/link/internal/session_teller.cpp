#include "ros2/link/internal/session_teller.h"

#include <utility>

#include "ros2/link/internal/graph_names.h"
#include "ros2/recording/internal/world_topics.h"
#include "session/internal/session_parts.h"

namespace QV::ros2 {
namespace {

using Lock = std::lock_guard<std::mutex>;

/** Others' timers run when /clock comes. */
constexpr ko::Duration kTick{10'000'000};
constexpr ko::Duration kJointPeriod{100'000'000};
constexpr ko::Duration kHealthPeriod{1'000'000'000};

std::optional<Model::Robot> robotIn(const session::Session& session) {
  if (!session.getDescription()) return std::nullopt;
  return *session.getDescription();
}

bool isDue(ko::Clock::time_point now, ko::Clock::time_point& last, ko::Duration period) {
  if (now < last + period) return false;
  last = now;
  return true;
}

}  // namespace

SessionTeller::SessionTeller(GraphSink& sink, session::Session& session, const FrameNames& names,
                             const GraphRobotOptions& options, std::function<void()> onTick)
    : sink(sink),
      session(session),
      onTick(std::move(onTick)),
      robot(robotIn(session)),
      hasSteps(robotOf(session).getVirtualRobot() || robotOf(session).isRecording()),
      frames(sink, session, names, options.knowsItsWay),
      joints(sink, session),
      firstRecordTopic(sink.getSize()),
      records(sink, names, mountedOn(session)) {
  records.announce(session.getManager().getSensorList());
  simulated.emplace(sink, session, names, options.noEchoIsInfinite);
  lastRecordTopic = sink.getSize();
  if (robot) drivers.emplace(sink, *robot, session.getKinds(), names);
  if (drivers && !options.noEchoIsInfinite) drivers->tellNoEchoAsGreatestRange();
  writeDescription(sink, session, names);
  if (const auto map = session.getMap()) writeMap(sink, *map, names);
  xStartTicking();
}

void SessionTeller::finish() {
  if (std::exchange(isFinished, true)) return;
  ticking.stop();
  if (isListening) removeListener(session, *this);
}

void SessionTeller::onWrite(const std::string& key, const QVValue& value, bool) {
  const Lock lock(mutex);
  const Time now = xNow();
  if (now != pendingTime) xFlush();
  pendingTime = now;
  if (isOpen && drivers) drivers->note(key, value);
}

void SessionTeller::onImage(int camera, const QVValue& image) {
  const Lock lock(mutex);
  const Time now = xNow();
  xBringFramesTo(now);
  if (drivers) drivers->writeImage(camera, image, now);
}

void SessionTeller::onStep(const robot::BodyStep& newStep) {
  const Lock lock(mutex);
  const Time now = xNow();
  if (now != pendingTime) xFlush();
  pendingTime = now;
  xStep(newStep, now);
  if (drivers) drivers->write(now);
}

void SessionTeller::goOn() {
  if (isFinished) return;
  xListen();
  // Ticking ended with the old time when a recording was played from its start again.
  if (!ticking.isRunning()) xStartTicking();
  const Lock lock(mutex);
  const Time now = xNow();
  if (isListening && !hasSteps && now != lastFrames) xStep(xLookAtBody(), now);
  if (!isDue(now, jointsTold, kJointPeriod)) return;
  xTellTime(now);
  joints.write(session, now);
}

void SessionTeller::show(const session::Snapshot& snapshot) {
  if (!isFinished) xListen();
  const Lock lock(mutex);
  xBringFramesTo(xNow());
  if (isDue(snapshot.time, healthTold, kHealthPeriod)) records.repeatHealth();
  records.write(snapshot);
  simulated->write(snapshot);
}

// Values that a robot's memory holds already are no measurements.
void SessionTeller::xListen() {
  const std::uint64_t matchesNow = sink.getMatchCount();
  if (std::exchange(matches, matchesNow) == matchesNow) return;
  const bool isRead = sink.hasReaders(0, sink.getSize());
  if (isRead == isListening) return;
  isListening = isRead;
  if (isRead) {
    addListener(session, *this);
  } else {
    removeListener(session, *this);
  }
  const Lock lock(mutex);
  isOpen = isRead;
}

void SessionTeller::xStartTicking() {
  ticking.setName("ROS2.Robot");
  ticking.setPeriod(kTick);
  ticking.compensateCallbackTime(true);
  ticking.setCallback([this] { xTick(); });
  ticking.start(true);
}

void SessionTeller::xTick() {
  // Time may advance far between two calls of obey(), so the tick is handled here.
  if (std::this_thread::get_id() == owner) {
    onTick();
    xListen();
  }
  const Lock lock(mutex);
  const Time now = xNow();
  xFlush();
  xTellTime(now);
}

SessionTeller::Time SessionTeller::xNow() {
  const Time now = ko::Clock::now();
  // A recording is played from an earlier time again.
  if (now < lastNow) {
    pendingTime = now;
    lastClock = lastFrames = jointsTold = healthTold = kNever;
  }
  lastNow = now;
  return now;
}

// No stamp is ahead of /clock.
void SessionTeller::xTellTime(Time time) {
  if (time <= lastClock) return;
  frames.writeClock(time);
  lastClock = time;
}

void SessionTeller::xStep(const robot::BodyStep& newStep, Time now) {
  step = newStep;
  if (!isOpen) return;
  xTellTime(now);
  frames.writeStep(step, now);
  lastFrames = now;
}

robot::BodyStep SessionTeller::xLookAtBody() const {
  const Math::Pose2D pose = session.getPose();
  return {pose, pose, robotOf(session).getVelocity()};
}

// Readers of a measurement find tf there already. A robot moves from step to step.
void SessionTeller::xBringFramesTo(Time time) {
  xTellTime(time);
  if (time <= lastFrames) return;
  frames.writeFrames(step, time);
  lastFrames = time;
}

void SessionTeller::xFlush() {
  if (!drivers || !drivers->hasNews()) return;
  xBringFramesTo(pendingTime);
  drivers->write(pendingTime);
}

}  // namespace QV::ros2
