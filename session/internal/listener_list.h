#pragma once

#include <shared_mutex>
#include <thread>
#include <vector>

#include "session/internal/run_listener.h"
#include "session/internal/session_robot.h"

namespace QV::session {

/** Tells several listeners what one robot tells. Thread-safe. */
class ListenerList : public RunListener {
 public:
  /** Adds a listener. It alone hears what is so now, and like the others all that is told from
   * then on. */
  void add(RunListener& listener, SessionRobot& robot);
  /** Once this has returned, it is not called any more. */
  void remove(RunListener& listener, SessionRobot& robot);
  /** Lets all of them hear another robot from now on. */
  void listenTo(SessionRobot& robot);

  void onWrite(const std::string& key, const QVValue& value, bool raised) override;
  void onImage(int camera, const QVValue& image) override;
  void onStep(const robot::BodyStep& step) override;
  void onCommand(const RunCommand& command) override;

 private:
  template <typename Tell>
  void xTellAll(const Tell& tell);

  std::shared_mutex mutex;
  std::vector<RunListener*> listeners;
  /** The listener that is being added, and by which thread. */
  RunListener* newest = nullptr;
  std::thread::id adding;
};

}  // namespace QV::session
