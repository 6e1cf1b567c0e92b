#pragma once

#include <functional>
#include <future>
#include <set>
#include <string>

#include "apps/terminal/key.h"
#include "apps/watch/watch_state.h"
#include "session/session.h"

namespace QV::app {

/**
 * Watches a session's sensors and executes the actions of keys: on another thread, because starting
 * hardware takes time, or at once in simulated time. Use it on one thread; the session must outlive
 * it.
 */
class Watch {
 public:
  explicit Watch(session::Session& session, std::launch how = std::launch::async);
  /** Waits for the action in progress. */
  ~Watch();
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  /** Sensors or families. */
  void subscribe(const std::set<std::string>& names);
  /** False for the key that quits. While one is being done, others but arrows are ignored. */
  bool press(Key key);

  /** Takes the present state. */
  const WatchState& look();

 private:
  void xChoose(int step);
  void xSwitchSubscription(const std::string& name);
  void xEnable(const std::string& name, bool enable);
  void xDiagnose(const std::string& name, bool success);
  void xDo(const std::string& what, std::function<void()> action);
  void xNoteEnd();
  const session::SensorState& xChosen() const { return state.seen.sensors[state.chosen]; }

  session::Session& session;
  const std::launch how;
  WatchState state;
  std::future<void> action;
};

}  // namespace QV::app
