#pragma once

#include <string>
#include <vector>

#include "session/open.h"

namespace QV::test {

/** The health of a sensor, as somebody sees it while a sound robot drives about. */
struct WatchedDrive {
  session::OpenOptions options;
  /** Faults that were told of, and states that came again, with the time in seconds and the reason.
   */
  std::vector<std::string> alarms = {};

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
    session->run(duration);
    // As the session ends, all are off again.
    drives = false;
  }
};

}  // namespace QV::test
