#pragma once

#include <set>
#include <string>
#include <vector>

#include "robot/services/internal/input_listener.h"
#include "robot/world/faults/fault.h"

namespace QV::session {

class Session;

/** A command that somebody gave a session: a name, and what it needs of the rest. */
struct SessionCommand {
  /** "subscribe", "enable", "drive", ... */
  std::string name;
  std::string subscriber = {};
  std::set<std::string> sensors = {};
  bool on = false;
  std::vector<double> values = {};
};

/** Makes a command of a fault: from and to in seconds, if it ends. */
QV_API SessionCommand commandOf(const robot::Fault& fault);

/** Hears all that goes into a session: what drivers measure, and what is asked of it. */
class SessionListener : public robot::InputListener {
 public:
  /** Hears of a command before it is done, which may take its time. On any thread. */
  virtual void onCommand(const SessionCommand& command) = 0;
};

/**
 * Adds a listener. It hears what is so now and all that goes into the session from then on; it must
 * be removed before it ends.
 */
QV_API void addListener(Session& session, SessionListener& listener);
QV_API void removeListener(Session& session, SessionListener& listener);

}  // namespace QV::session
