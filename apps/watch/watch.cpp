#include "apps/watch/watch.h"

#include <algorithm>

#include "apps/subscriber.h"

namespace QV::app {
Watch::Watch(session::Session& session, std::launch how) : session(session), how(how) {
  look();
}

Watch::~Watch() {
  if (action.valid()) action.wait();
}

void Watch::subscribe(const std::set<std::string>& names) {
  xDo("subscribed", [this, names] { session.subscribe(kSubscriber, names); });
}

bool Watch::press(Key key) {
  if (key == Key::quit) return false;
  if (key == Key::up) xChoose(-1);
  if (key == Key::down) xChoose(1);
  xNoteEnd();
  if (action.valid() || state.seen.sensors.empty()) return true;
  // The key acts on the present state, not on the one shown.
  look();
  const std::string name = xChosen().name;
  if (key == Key::subscribe) xSwitchSubscription(name);
  if (key == Key::enable) xEnable(name, !xChosen().enabled);
  if (key == Key::diagnose) xDiagnose(name, !xChosen().diagnosis);
  return true;
}

void Watch::xSwitchSubscription(const std::string& name) {
  if (xChosen().subscribers.count(kSubscriber) > 0) {
    xDo(name + ": unsubscribed", [this, name] { session.unsubscribe(kSubscriber, {name}); });
  } else {
    xDo(name + ": subscribed", [this, name] { session.subscribe(kSubscriber, {name}); });
  }
}

void Watch::xEnable(const std::string& name, bool enable) {
  xDo(name + (enable ? ": enabled" : ": disabled"),
      [this, name, enable] { session.enable(name, enable); });
}

void Watch::xDiagnose(const std::string& name, bool success) {
  xDo(name + (success ? ": diagnosis set to good" : ": diagnosis set to bad"),
      [this, name, success] { session.diagnose(name, success); });
}

void Watch::xChoose(int step) {
  const int last = static_cast<int>(state.seen.sensors.size()) - 1;
  state.chosen = static_cast<std::size_t>(
      std::clamp(static_cast<int>(state.chosen) + step, 0, std::max(last, 0)));
}

void Watch::xDo(const std::string& what, std::function<void()> wanted) {
  state.note = what;
  action = std::async(how, std::move(wanted));
  if (how == std::launch::deferred) action.wait();
}

void Watch::xNoteEnd() {
  const auto now = std::chrono::seconds::zero();
  if (!action.valid() || action.wait_for(now) != std::future_status::ready) return;
  try {
    action.get();
  } catch (const std::exception& exception) {
    state.note = exception.what();
  }
}

const WatchState& Watch::look() {
  xNoteEnd();
  state.seen = session.look();
  state.seen.sensors = session::sensorsByName(state.seen);
  return state;
}

}  // namespace QV::app
