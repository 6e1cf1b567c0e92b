#pragma once

#include <shared_mutex>
#include <thread>
#include <vector>

#include "session/internal/session_listener.h"
#include "session/internal/session_robot.h"

namespace QV::session {

/** Passes everything that one robot reports to several listeners. Thread-safe. */
class ListenerList : public SessionListener {
 public:
  /** Adds a listener. It alone gets the present state first; then it gets what all get. */
  void add(SessionListener& listener, SessionRobot& robot);
  /** The listener is not called after this returns. */
  void remove(SessionListener& listener, SessionRobot& robot);
  /** Connects all listeners to another robot. */
  void listenTo(SessionRobot& robot);

  void onWrite(const std::string& key, const QVValue& value, bool raised) override;
  void onImage(int camera, const QVValue& image) override;
  void onStep(const robot::BodyStep& step) override;
  void onCommand(const SessionCommand& command) override;

 private:
  template <typename Tell>
  void xTellAll(const Tell& tell);

  std::shared_mutex mutex;
  std::vector<SessionListener*> listeners;
  /** The listener that is being added, and the thread that adds it. */
  SessionListener* newest = nullptr;
  std::thread::id adding;
};

}  // namespace QV::session
