#include "session/internal/touch_look.h"

#include "platform/ko/log.h"
#include "session/internal/seconds.h"

namespace QV::session {
namespace {

// Touches that are farther apart are two.
constexpr ko::Duration kApart{40'000'000};
constexpr ko::Duration kShown{1'000'000'000};

}  // namespace

void TouchLook::note() {
  const auto now = ko::Clock::now();
  for (const auto& [name, position] : robot.getTouches()) {
    const auto [touch, isNew] = touches.try_emplace(name, Touch{position, now, now});
    if (isNew) ko::log::info("Session", "run") << name << " touched";
    const bool goesOn = now - touch->second.last <= kApart;
    touch->second = {position, goesOn ? touch->second.began : now, now};
  }
  std::erase_if(touches, [now](const auto& entry) { return now - entry.second.last > kShown; });
}

std::vector<TouchState> TouchLook::look() const {
  std::vector<TouchState> states;
  states.reserve(touches.size());
  for (const auto& [name, touch] : touches) {
    states.push_back({name, touch.position, inSeconds(ko::Clock::now() - touch.began)});
  }
  return states;
}

}  // namespace QV::session
