#pragma once

#include <set>
#include <string>
#include <vector>

#include "robot/services/internal/input_listener.h"
#include "robot/world/faults/fault.h"

namespace QV::session {

class Session;

/** A command to a session: its name, and those of the other fields that it needs. */
struct SessionCommand {
  /** "subscribe", "enable", "drive", ... */
  std::string name;
  std::string subscriber = {};
  std::set<std::string> sensors = {};
  bool on = false;
  std::vector<double> values = {};
};

/** Makes a command of a fault: the values are from and, if it ends, to, in seconds. */
QV_API SessionCommand commandOf(const robot::Fault& fault);

/** Listens to all inputs of a session: measurements of drivers, and commands. */
class SessionListener : public robot::InputListener {
 public:
  /** Called before a command is executed, which may take time. On any thread. */
  virtual void onCommand(const SessionCommand& command) = 0;
};

/**
 * Adds a listener. It gets the present state, then all inputs of the session. Remove it before it
 * ends.
 */
QV_API void addListener(Session& session, SessionListener& listener);
QV_API void removeListener(Session& session, SessionListener& listener);

}  // namespace QV::session
