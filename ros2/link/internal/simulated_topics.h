#pragma once

#include <map>
#include <string>

#include "ros2/recording/internal/frame_names.h"
#include "ros2/recording/internal/message_sink.h"
#include "session/session.h"
#include "session/snapshot.h"

namespace QV::ros2 {

/**
 * Writes what sensors without drivers measure, those that cast rays into a map: each fan a scan or,
 * of those that know their nearest echo alone, a range. All look about the robot's heading, so what
 * they say is in its frame.
 */
class SimulatedTopics {
 public:
  /** `sink` must outlive it. No topics for a robot with drivers. */
  SimulatedTopics(MessageSink& sink, session::Session& session, const FrameNames& names,
                  bool noEchoIsInfinite);

  void write(const session::Snapshot& snapshot);

 private:
  template <typename Message>
  void xWrite(std::uint16_t topic, Message message, ko::Clock::time_point time);

  MessageSink& sink;
  const std::string frame;
  const bool noEchoIsInfinite;
  /** The topic numbers by sensor name. */
  std::map<std::string, std::uint16_t> topics;
};

}  // namespace QV::ros2
