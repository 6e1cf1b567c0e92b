#pragma once

#include <string>
#include <vector>

#include "session/open.h"

namespace QV::test {

/** What somebody sees of a sensor's health while a sound robot drives about. */
struct WatchedDrive {
  session::OpenOptions options;
  /** Faults that were told of, with the time in seconds and the reason. */
  std::vector<std::string> alarms = {};

  /** All sensors run, for so long; porter wanders, or stands. */
  void run(boost::chrono::seconds duration, bool wanders = true) {
    const auto session = session::openVirtual("porter", options);
    session->getManager().onHealthChanged(
        [this](const std::string& sensor, const sensor::SensorHealth& health) {
          if (!isFault(health.state)) return;
          const auto now = ko::Clock::now().time_since_epoch();
          alarms.push_back(std::to_string(now.count() / 1'000'000'000) + " s: " + sensor + " " +
                           getName(health.state) + ": " + health.reason);
        });
    session->subscribe("watched drive", session->getManager().getFamilyNames());
    if (wanders) session->wander();
    session->run(duration);
  }
};

}  // namespace QV::test
