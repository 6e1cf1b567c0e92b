#include "ros2/link/graph_robot.h"

#include <mutex>
#include <optional>
#include <set>
#include <stdexcept>
#include <thread>
#include <utility>

#include "platform/ko/periodic_task.h"
#include "ros2/link/internal/graph_orders.h"
#include "ros2/link/internal/graph_sink.h"
#include "ros2/link/internal/joint_topics.h"
#include "ros2/recording/internal/driver_topics.h"
#include "ros2/recording/internal/frame_topics.h"
#include "ros2/recording/internal/record_topics.h"
#include "ros2/recording/internal/world_topics.h"
#include "session/internal/run_listener.h"
#include "session/internal/session_parts.h"

namespace QV::ros2 {
namespace {

using Lock = std::lock_guard<std::mutex>;
using Time = ko::Clock::time_point;

/** Others' timers run when /clock comes. */
constexpr ko::Duration kTick{10'000'000};
constexpr ko::Duration kJointPeriod{100'000'000};
constexpr ko::Duration kHealthPeriod{1'000'000'000};
/** Before any time at which something may be due. */
constexpr Time kNever{ko::Duration{-1'000'000'000'000}};

std::optional<Model::Robot> robotIn(const session::Session& session) {
  if (!session.getDescription()) return std::nullopt;
  return *session.getDescription();
}

std::string nameOf(const session::Session& session, const std::string& asked) {
  if (!asked.empty()) return asked;
  const auto* robot = session.getDescription();
  if (!robot || robot->name.empty()) return "qv_robot";
  std::string name = toGraphName(robot->name);
  for (char& letter : name) {
    if (letter == '/') letter = '_';
  }
  return name;
}

std::set<std::string> mountedOn(const std::optional<Model::Robot>& robot) {
  std::set<std::string> names;
  if (!robot) return names;
  for (const auto& [name, config] : robot->sensorConfigs) names.insert(name);
  return names;
}

std::set<std::string> framesOf(const session::Session& session) {
  std::set<std::string> frames{FrameNames::kMap, FrameNames::kOdometry,
                               FrameNames(session).ofBase()};
  for (const std::string& sensor : mountedOn(robotIn(session)))
    frames.insert({sensor, FrameNames(session).ofOptics(sensor)});
  return frames;
}

FrameNames namesOf(const session::Session& session, const GraphRobotOptions& options) {
  const auto known = framesOf(session);
  for (const auto& [name, renamed] : options.frames) {
    if (known.count(name) == 0)
      throw std::invalid_argument("a frame of the robot expected (map, odom, " +
                                  FrameNames(session).ofBase() + " or a sensor), \"" + name +
                                  "\" given");
    if (renamed.empty() || renamed.front() == '/')
      throw std::invalid_argument("a frame's name without a slash before it expected, \"" +
                                  renamed + "\" given");
  }
  return FrameNames(session, options.frames, options.framePrefix);
}

bool isDue(Time now, Time& last, ko::Duration period) {
  if (now < last + period) return false;
  last = now;
  return true;
}

}  // namespace

class GraphRobot::Impl : public session::RunListener {
 public:
  Impl(Graph& graph, session::Session& session, const GraphRobotOptions& options)
      : session(session),
        robot(robotIn(session)),
        names(namesOf(session, options)),
        hasSteps(robotOf(session).getVirtualRobot() || robotOf(session).isRecording()),
        node(graph.createNode(nameOf(session, options.name), options.nameSpace)),
        sink(*node, graph.getDistro(), options.hasOwnFrames),
        orders(*node, names, options),
        frames(sink, session, names),
        joints(sink, session),
        firstRecordTopic(sink.getSize()),
        records(sink, names, mountedOn(robot)) {
    records.announce(session.getManager().getSensorList());
    lastRecordTopic = sink.getSize();
    if (!options.knowsItsWay) frames.leaveMapToOthers();
    if (robot) drivers.emplace(sink, *robot, names);
    if (drivers && !options.noEchoIsInfinite) drivers->tellNoEchoAsGreatestRange();
    writeDescription(sink, session);
    if (const auto map = session.getMap()) writeMap(sink, *map, names);
    xOpen();
  }

  ~Impl() override { finish(); }

  void finish() {
    if (std::exchange(isFinished, true)) return;
    ticking.stop();
    session.removeListener(*this);
  }

  void onWrite(const std::string& key, const QVValue& value, bool) override {
    const Lock lock(mutex);
    const Time now = xNow();
    if (now != pendingTime) xFlush();
    pendingTime = now;
    if (isOpen && drivers) drivers->note(key, value);
  }

  void onImage(int camera, const QVValue& image) override {
    const Lock lock(mutex);
    const Time now = xNow();
    xBringFramesTo(now);
    if (drivers) drivers->writeImage(camera, image, now);
  }

  void onStep(const robot::BodyStep& newStep) override {
    const Lock lock(mutex);
    const Time now = xNow();
    if (now != pendingTime) xFlush();
    pendingTime = now;
    xStep(newStep, now);
    if (drivers) drivers->write(now);
  }

  void onCommand(const session::RunCommand&) override {}

  void obey() {
    if (isFinished) return;
    // It ended with the time that a recording had until it was played from its start again.
    if (!ticking.isRunning()) xStartTicking();
    orders.obey(session);
    const Lock lock(mutex);
    const Time now = xNow();
    if (!hasSteps && now != lastFrames) xStep(xLookAtBody(), now);
    if (!isDue(now, jointsTold, kJointPeriod)) return;
    xTellTime(now);
    joints.write(session, now);
  }

  void show(const session::Snapshot& snapshot) {
    const Lock lock(mutex);
    xBringFramesTo(xNow());
    if (isDue(snapshot.time, healthTold, kHealthPeriod)) records.repeatHealth();
    records.write(snapshot);
  }

  session::Demand getDemand() const {
    std::set<std::string> wanted = sink.getWantedSensors();
    // There may be more in a description than is built.
    std::erase_if(wanted, [&](const auto& name) { return !session.getManager().isSensor(name); });
    return {{GraphRobotOptions::kSubscriber, wanted}};
  }

  bool isWatched() const { return sink.hasReaders(firstRecordTopic, lastRecordTopic); }

  session::Session& session;
  const std::optional<Model::Robot> robot;
  const FrameNames names;
  const bool hasSteps;
  const std::unique_ptr<GraphNode> node;
  GraphSink sink;
  GraphOrders orders;

 private:
  // What a robot's memory holds already is no measurement.
  void xOpen() {
    session.addListener(*this);
    {
      const Lock lock(mutex);
      isOpen = true;
    }
    xStartTicking();
  }

  void xStartTicking() {
    ticking.setName("ROS2.Robot");
    ticking.setPeriod(kTick);
    ticking.compensateCallbackTime(true);
    ticking.setCallback([this] { xTick(); });
    ticking.start(true);
  }

  void xTick() {
    // In simulated time, of which much may go by between two calls of obey().
    if (std::this_thread::get_id() == owner) orders.obey(session);
    const Lock lock(mutex);
    const Time now = xNow();
    xFlush();
    xTellTime(now);
  }

  Time xNow() {
    const Time now = ko::Clock::now();
    // A recording is played from an earlier time again.
    if (now < lastNow) {
      pendingTime = now;
      lastClock = lastFrames = jointsTold = healthTold = kNever;
    }
    lastNow = now;
    return now;
  }

  // Nothing goes out that is stamped later than /clock.
  void xTellTime(Time time) {
    if (time <= lastClock) return;
    frames.writeClock(time);
    lastClock = time;
  }

  void xStep(const robot::BodyStep& newStep, Time now) {
    step = newStep;
    if (!isOpen) return;
    xTellTime(now);
    frames.writeStep(step, now);
    lastFrames = now;
  }

  robot::BodyStep xLookAtBody() const {
    const Math::Pose2D pose = session.getPose();
    return {pose, pose, robotOf(session).getVelocity()};
  }

  // Whoever gets what was measured then finds tf there already. A robot moves from step to step.
  void xBringFramesTo(Time time) {
    xTellTime(time);
    if (time <= lastFrames) return;
    frames.writeFrames(step, time);
    lastFrames = time;
  }

  void xFlush() {
    if (!drivers || !drivers->hasNews()) return;
    xBringFramesTo(pendingTime);
    drivers->write(pendingTime);
  }

  const std::thread::id owner = std::this_thread::get_id();
  std::mutex mutex;
  FrameTopics frames;
  JointTopics joints;
  const std::size_t firstRecordTopic;
  RecordTopics records;
  std::size_t lastRecordTopic = 0;
  std::optional<DriverTopics> drivers;
  robot::BodyStep step;
  Time pendingTime = kNever;
  Time lastNow = kNever;
  Time lastClock = kNever;
  Time lastFrames = kNever;
  Time jointsTold = kNever;
  Time healthTold = kNever;
  bool isOpen = false;
  bool isFinished = false;
  ko::PeriodicTask ticking;
};

GraphRobot::GraphRobot(Graph& graph, session::Session& session, const GraphRobotOptions& options)
    : impl(std::make_unique<Impl>(graph, session, options)) {}

GraphRobot::~GraphRobot() = default;

void GraphRobot::obey() {
  impl->obey();
}

session::Demand GraphRobot::getDemand() const {
  return impl->getDemand();
}

bool GraphRobot::isWatched() const {
  return impl->isWatched();
}

void GraphRobot::show(const session::Snapshot& snapshot) {
  impl->show(snapshot);
}

void GraphRobot::finish() {
  impl->finish();
}

std::vector<WireTopic> GraphRobot::getTopics() const {
  std::vector<WireTopic> topics = impl->orders.getTopics();
  for (const auto& [topic, type] : impl->sink.getTopics())
    topics.push_back({topic, "rt" + topic.name, type->getDdsName(), false});
  return topics;
}

std::uint64_t GraphRobot::getLostCount() const {
  return impl->sink.getLostCount();
}

}  // namespace QV::ros2
