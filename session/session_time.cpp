#include <algorithm>
#include <utility>

#include "platform/ko/clock.h"
#include "session/internal/session_parts.h"
#include "session/session.h"
#include "session/usage_error.h"

namespace QV::session {
namespace {

// The robot is steered after each slice of this length, and at the end of a run.
constexpr ko::Duration kSlice{20'000'000};

void goTo(SessionParts& parts, ko::Clock::time_point time) {
  // A due task may have advanced time further.
  const ko::Duration left = time - ko::Clock::now();
  if (left <= ko::Duration::zero()) return;
  if (parts.time) return parts.time->advance(left);
  ko::os::msleep(static_cast<int>(boost::chrono::ceil<boost::chrono::milliseconds>(left).count()));
}

void goOnTo(SessionParts& parts, ko::Clock::time_point time) {
  for (auto due = parts.robot->getNextStep(); due && *due <= time;
       due = parts.robot->getNextStep()) {
    goTo(parts, *due);
    parts.robot->makeStep();
  }
  goTo(parts, time);
}

}  // namespace

void Session::run(ko::Duration duration) {
  xAdvance(ko::Clock::now() + std::max(duration, ko::Duration::zero()));
}

ko::Duration Session::getSettlingTime() const {
  return parts->robot->getSettlingTime();
}

bool Session::step() {
  if (!parts->robot->isRecording()) {
    run(Pacing::kStep);
    return true;
  }
  do {
    const auto due = parts->robot->getNextStep();
    if (!due) return false;
    goTo(*parts, *due);
    parts->robot->makeStep();
  } while (parts->robot->isAmidSteps());
  parts->note();
  return true;
}

double Session::getShareDone() const {
  return parts->robot->getShareDone();
}

std::optional<ko::Duration> Session::getLength() const {
  return parts->robot->getLength();
}

void Session::seek(ko::Duration sinceStart) {
  if (!getLength()) throw UsageError("seeking needs a recording; this is \"" + getTitle() + "\"");
  const auto target = [&] { return parts->robot->getStart() + sinceStart; };
  if (target() < ko::Clock::now()) xReopen();
  run(target() - ko::Clock::now());
}

void Session::xReopen() {
  if (!parts->reopen) throw UsageError("a recording that can be played again expected");
  SessionParts::replace(*this, parts->reopen());
}

// Only one simulated time can exist at once, so the old one ends first.
void SessionParts::replace(Session& session, const std::function<TimedRobot()>& make) {
  auto& parts = session.parts;
  const Reopen reopen = parts->reopen;
  const Pacing pacing = parts->pacing;
  const auto listeners = parts->listeners;
  parts->robot->setListener(nullptr);
  parts.reset();
  TimedRobot made = make();
  parts = std::make_unique<SessionParts>(std::move(made.time), std::move(made.robot));
  parts->reopen = reopen;
  parts->pacing = pacing;
  parts->listeners = listeners;
  listeners->listenTo(*parts->robot);
}

void Session::keepPace(ko::Duration machine) {
  if (const auto there = parts->robot->catchUp()) {
    parts->driver.release(machine);
    if (!isPaused()) xAdvance(*there);
    return;
  }
  while (machine > ko::Duration::zero()) {
    const ko::Duration part = std::min(machine, kSlice);
    machine -= part;
    parts->driver.release(part);
    run(parts->pacing.scale(part));
    // A recording has no steps after its end.
    if (getLength() && !parts->robot->getNextStep()) pause(true);
  }
}

void Session::pause(bool on) {
  parts->pacing.pause(on);
}

bool Session::isPaused() const {
  return parts->pacing.isPaused();
}

void Session::setSpeed(double speed) {
  parts->pacing.setSpeed(speed);
}

void Session::xAdvance(ko::Clock::time_point end) {
  for (auto now = ko::Clock::now(); now < end; now = ko::Clock::now()) {
    const ko::Duration part =
        std::min<ko::Duration>(end - now, kSlice - now.time_since_epoch() % kSlice);
    if (!parts->robot->awaitTime(now + part)) break;
    parts->driver.steer(part);
    goOnTo(*parts, now + part);
    parts->note();
  }
  parts->driver.steer(ko::Duration::zero());
}

}  // namespace QV::session
