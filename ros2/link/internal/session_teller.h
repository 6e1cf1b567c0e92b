#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "platform/ko/periodic_task.h"
#include "ros2/link/graph_robot.h"
#include "ros2/link/internal/graph_sink.h"
#include "ros2/link/internal/joint_topics.h"
#include "ros2/link/internal/simulated_topics.h"
#include "ros2/recording/internal/driver_topics.h"
#include "ros2/recording/internal/frame_topics.h"
#include "ros2/recording/internal/record_topics.h"
#include "session/internal/session_listener.h"

namespace QV::ros2 {

/**
 * Publishes a session to a graph, in the order that readers need: /clock, tf, measurements.
 * Use it on the session's thread; callbacks may come on other threads.
 */
class SessionTeller : public session::SessionListener {
 public:
  /** `sink` and `session` must outlive it. `onTick` is called often in simulated time. */
  SessionTeller(GraphSink& sink, session::Session& session, const FrameNames& names,
                const GraphRobotOptions& options, std::function<void()> onTick);
  ~SessionTeller() override { finish(); }

  /** Publishes the parts without an event of their own: joints, and a body without steps. */
  void goOn();
  void show(const session::Snapshot& snapshot);
  /** True if somebody reads a topic that needs snapshots. */
  bool isWatched() const { return sink.hasReaders(firstRecordTopic, lastRecordTopic); }
  void finish();

  void onWrite(const std::string& key, const QVValue& value, bool raised) override;
  void onImage(int camera, const QVValue& image) override;
  void onStep(const robot::BodyStep& newStep) override;
  void onCommand(const session::SessionCommand&) override {}

 private:
  using Time = ko::Clock::time_point;
  /** A time before any at which something may be due. */
  static constexpr Time kNever{ko::Duration{-1'000'000'000'000}};

  void xListen();
  void xStartTicking();
  void xTick();
  Time xNow();
  void xTellTime(Time time);
  void xStep(const robot::BodyStep& newStep, Time now);
  robot::BodyStep xLookAtBody() const;
  void xBringFramesTo(Time time);
  void xFlush();

  GraphSink& sink;
  session::Session& session;
  const std::function<void()> onTick;
  const std::optional<Model::Robot> robot;
  const bool hasSteps;
  const std::thread::id owner = std::this_thread::get_id();
  std::mutex mutex;
  FrameTopics frames;
  JointTopics joints;
  const std::size_t firstRecordTopic;
  RecordTopics records;
  std::optional<SimulatedTopics> simulated;
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
  bool isListening = false;
  /** The readers' comings and goings that xListen has seen. */
  std::uint64_t matches = 0;
  bool isFinished = false;
  ko::PeriodicTask ticking;
};

}  // namespace QV::ros2
