#pragma once

#include <shared_mutex>
#include <thread>
#include <vector>

#include "session/internal/session_listener.h"
#include "session/internal/session_robot.h"

namespace QV::session {

/** Tells several listeners what one robot tells. All operations are safe from any thread. */
class ListenerList : public SessionListener {
 public:
  /** It alone hears what is so now, and like the others all that is told from then on. */
  void add(SessionListener& listener, SessionRobot& robot);
  /** Once this has returned, it is not called any more. */
  void remove(SessionListener& listener, SessionRobot& robot);
  /** What all of them hear from now on is another robot. */
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
  /** Who is being added, and by which thread. */
  SessionListener* newest = nullptr;
  std::thread::id adding;
};

}  // namespace QV::session
