#pragma once

#include <functional>
#include <string>

#include "ros2/recording/session_recorder.h"
#include "ros2/recording/session_replay.h"
#include "session/open.h"

namespace QV::test {

/** Runs a session for `cycles` of 0.1 s, records it, and lets `meddle` do something in each. */
inline void recordSession(session::Session& session, const std::string& path, int cycles,
                          const std::function<void(session::Session&, int)>& meddle = {}) {
  ros2::SessionRecorder recorder(path, session);
  session.subscribe("test", session.getManager().getFamilyNames());
  for (int cycle = 0; cycle < cycles; ++cycle) {
    if (meddle) meddle(session, cycle);
    session.run(boost::chrono::milliseconds(100));
    const session::Snapshot snapshot = session.look();
    // The second time as a paused session does.
    for (int time = 0; time < 2; ++time) recorder.show(snapshot);
  }
  recorder.finish();
}

/** A robot that meets everything: noise, people, something ahead. */
inline session::OpenOptions busyWorld() {
  session::OpenOptions options;
  options.world.seed = 7;
  options.world.rangeNoise = 0.02f;
  options.world.dropOuts = 0.05f;
  options.world.odometryDrift = 0.05f;
  options.world.randomPeople = 2;
  options.somebodyAhead = true;
  options.start = Math::Pose2D(3.0f, 6.3f, 0.0f);
  return options;
}

struct Comparison {
  int looks = 0;
  std::uint64_t leftOut = 0;
  std::size_t records = 0;
  std::string difference = {};
};

/** Plays all of it; the first difference, if there is one. */
inline Comparison compareSession(const std::string& path) {
  ros2::SessionReplay replay(path);
  replay.begin();
  Comparison comparison;
  while (replay.getSession().step()) {
    ++comparison.looks;
    comparison.records += session::recordsOf(replay.look()).size();
    const auto difference = replay.compare();
    if (difference && comparison.difference.empty()) comparison.difference = difference->toText();
  }
  comparison.leftOut = replay.countLeftOut();
  return comparison;
}

}  // namespace QV::test
