#pragma once

#include <dds/dds.h>
#include <thread>

#include "ros2/graph/internal/entity.h"

namespace QV::ros2 {

/**
 * The way into a graph on which others are already. A Fast DDS participant that was there first
 * offers what it has within 50 µs of its own announcement, before the engine has taken note of it;
 * the engine drops that offer, and the next one comes up to a second later. A second participant
 * gets an offer of its own, from which the engine learns what the first one has missed. It leaves
 * when nobody else has come for some seconds.
 */
class Arrival {
 public:
  /** Waits for others, 40 ms at most. `domain` must outlive it. */
  Arrival(dds_entity_t domain, bool expectsOthers);
  /** For use while the arrival exists. */
  dds_entity_t getParticipant() const { return participant.get(); }

 private:
  Entity participant;
  std::jthread leaving;
};

}  // namespace QV::ros2
