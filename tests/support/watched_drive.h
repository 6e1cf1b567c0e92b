#pragma once

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "platform/math/pose2d.h"
#include "session/open.h"

namespace QV::test {

/** The health of a sensor, as somebody sees it while a sound robot drives about. */
struct WatchedDrive {
  session::OpenOptions options;
  /** Faults that were told of, and states that came again, with the time in seconds and the reason.
   */
  std::vector<std::string> alarms = {};
  /** The way of the last drive, and its longest rest. */
  double metres = 0.0;
  int secondsAtRest = 0;

  using Begin = void (*)(session::Session& robot);

  static void wander(session::Session& robot) { robot.wander(); }
  /** All sensors run, for so long, and porter does what `begin` tells it. */
  void run(boost::chrono::seconds duration, Begin begin = wander) {
    bool drives = true;
    const auto session = session::openVirtual("porter", options);
    session->getManager().onHealthChanged(
        [this, &drives](const std::string& sensor, const sensor::SensorHealth& health) {
          if (!drives || (!isFault(health.state) && health.times == 1)) return;
          const auto now = ko::Clock::now().time_since_epoch();
          alarms.push_back(std::to_string(now.count() / 1'000'000'000) + " s: " + sensor + " " +
                           getName(health.state) + ": " + health.reason);
        });
    session->subscribe("watched drive", session->getManager().getFamilyNames());
    begin(*session);
    go(*session, static_cast<int>(duration.count()));
    // As the session ends, all are off again.
    drives = false;
    for (const auto& [sensor, health] : session->getManager().getHealth()) {
      if (health.state == sensor::HealthState::sound) continue;
      alarms.push_back("in the end: " + sensor + " " + getName(health.state));
    }
  }

 private:
  void go(session::Session& robot, int seconds) {
    metres = 0.0;
    secondsAtRest = 0;
    int rest = 0;
    for (int second = 0; second < seconds; ++second) {
      const Math::Pose2D before = robot.getPose();
      robot.run(boost::chrono::seconds(1));
      const Math::Pose2D now = robot.getPose();
      const bool moves = before.x != now.x || before.y != now.y || before.theta != now.theta;
      metres += std::hypot(now.x - before.x, now.y - before.y);
      rest = moves ? 0 : rest + 1;
      secondsAtRest = std::max(secondsAtRest, rest);
    }
  }
};

}  // namespace QV::test
