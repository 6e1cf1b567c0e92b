#pragma once

#include <set>
#include <string>
#include <vector>

#include "robot/services/internal/input_listener.h"
#include "robot/world/faults/fault.h"

namespace QV::session {

/** What somebody asked of a session: a name, and what it needs of the rest. */
struct SessionCommand {
  /** "subscribe", "enable", "drive", ... */
  std::string name;
  std::string subscriber = {};
  std::set<std::string> sensors = {};
  bool on = false;
  std::vector<double> values = {};
};

/** From and to in seconds, if it ends. */
QV_API SessionCommand commandOf(const robot::Fault& fault);

/** Hears all that goes into a session: what drivers measure, and what is asked of it. */
class SessionListener : public robot::InputListener {
 public:
  /** Before it is done, which may take its time. On any thread. */
  virtual void onCommand(const SessionCommand& command) = 0;
};

}  // namespace QV::session
