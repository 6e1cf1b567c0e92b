#include "session/internal/listener_list.h"

#include <mutex>

namespace QV::session {

template <typename Tell>
void ListenerList::xTellAll(const Tell& tell) {
  const std::shared_lock lock(mutex);
  if (newest && adding == std::this_thread::get_id()) return tell(*newest);
  for (SessionListener* const listener : listeners) tell(*listener);
}

void ListenerList::add(SessionListener& listener, SessionRobot& robot) {
  {
    const std::lock_guard lock(mutex);
    listeners.push_back(&listener);
    newest = &listener;
    adding = std::this_thread::get_id();
  }
  robot.setListener(this);
  const std::lock_guard lock(mutex);
  newest = nullptr;
}

void ListenerList::remove(SessionListener& listener, SessionRobot& robot) {
  const std::lock_guard lock(mutex);
  std::erase(listeners, &listener);
  if (listeners.empty()) robot.setListener(nullptr);
}

void ListenerList::listenTo(SessionRobot& robot) {
  bool isAnybodyThere = false;
  {
    const std::shared_lock lock(mutex);
    isAnybodyThere = !listeners.empty();
  }
  robot.setListener(isAnybodyThere ? this : nullptr);
}

void ListenerList::onWrite(const std::string& key, const QVValue& value, bool raised) {
  xTellAll([&](SessionListener& listener) { listener.onWrite(key, value, raised); });
}

void ListenerList::onImage(int camera, const QVValue& image) {
  xTellAll([&](SessionListener& listener) { listener.onImage(camera, image); });
}

void ListenerList::onStep(const robot::BodyStep& step) {
  xTellAll([&](SessionListener& listener) { listener.onStep(step); });
}

void ListenerList::onCommand(const SessionCommand& command) {
  xTellAll([&](SessionListener& listener) { listener.onCommand(command); });
}

}  // namespace QV::session
