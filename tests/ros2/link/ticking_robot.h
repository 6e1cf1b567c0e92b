#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <numbers>
#include <thread>

#include "ros2/graph/graph.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/messages/sensor_msgs.h"
#include "tests/ros2/support/own_domain.h"

namespace QV::test {

/**
 * Somebody's robot on a graph: its clock goes on by 10 ms and it says all that it has to say every
 * 2 ms of the machine's.
 */
class TickingRobot {
 public:
  using Stamp = ros2::builtin_interfaces::Time;
  /** Says something; on the robot's thread. */
  using Say = std::function<void(const Stamp& now)>;

  TickingRobot() : ticking([this] { xTick(); }) {}
  ~TickingRobot() {
    xChange([this] { ended = true; });
    ticking.join();
  }

  ros2::GraphNode& getNode() { return *node; }
  void say(const std::string& name, Say what) {
    xChange([&] { says[name] = std::move(what); });
  }
  void fallSilent(const std::string& name) {
    xChange([&] { says.erase(name); });
  }
  /** The clock stands still, and what is said is of that time. */
  void pause(bool on) {
    xChange([&] { paused = on; });
  }
  /** Ends its /clock, or begins it again. */
  void publishClock(bool on) {
    xChange([&] { clock = on ? xPublishClock() : nullptr; });
  }
  void setClock(std::int64_t seconds) {
    xChange([&] { time = seconds * kSecond; });
  }

 private:
  static constexpr std::int64_t kSecond = 1'000'000'000;
  static constexpr std::int64_t kStep = 10'000'000;

  template <typename Change>
  void xChange(const Change& change) {
    const std::lock_guard lock(mutex);
    change();
    changed.notify_all();
  }

  std::unique_ptr<ros2::Publisher> xPublishClock() {
    return node->publish("/clock", ros2::rosgraph_msgs::Clock::getType());
  }

  void xTick() {
    std::unique_lock lock(mutex);
    while (!ended) {
      if (!paused) time += kStep;
      const Stamp now{static_cast<std::int32_t>(time / kSecond),
                      static_cast<std::uint32_t>(time % kSecond)};
      if (clock) clock->write(ros2::rosgraph_msgs::Clock{now});
      for (const auto& [name, say] : says) say(now);
      changed.wait_for(lock, std::chrono::milliseconds(2), [this] { return ended; });
    }
  }

  ros2::Graph graph{aloneOn()};
  const std::unique_ptr<ros2::GraphNode> node = graph.createNode("somebody");
  std::unique_ptr<ros2::Publisher> clock = xPublishClock();
  std::mutex mutex;
  std::condition_variable changed;
  std::map<std::string, Say> says;
  std::int64_t time = 1000 * kSecond;
  bool paused = false;
  bool ended = false;
  std::thread ticking;
};

}  // namespace QV::test
