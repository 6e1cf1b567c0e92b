#include "python/bindings/session_handle.h"

#include <algorithm>
#include <chrono>

namespace QV::python {
namespace {

/** A session steers its robot so often: pieces that end there are those of a whole session. */
constexpr ko::Duration kSlice{20'000'000};

/**
 * Lets time go by for those who are in a call of the session still: they may wait for hardware in
 * simulated time, which nobody else moves. They get the processor now and then, and half a minute.
 */
void awaitOthers(const std::shared_ptr<session::Session>& last) try {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (last.use_count() > 1 && std::chrono::steady_clock::now() < end) {
    last->run(kSlice);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
} catch (const std::exception&) {
  // It ends anyway.
}

/** For good: stopping hardware would wait for time that the thread that opened it has to move. */
void leave(std::shared_ptr<session::Session> session) {
  new std::shared_ptr<session::Session>(std::move(session));
  if (PyErr_WarnEx(PyExc_ResourceWarning,
                   "a session that was not closed on the thread that opened it stays for good", 1))
    PyErr_WriteUnraisable(nullptr);
}

}  // namespace

SessionHandle::SessionHandle(std::shared_ptr<session::Session> session, bool ownTime)
    : session(std::move(session)), ownTime(ownTime) {}

SessionHandle::~SessionHandle() {
  end();
}

void SessionHandle::close() {
  if (!session) return;
  const Use inUse(*this);
  end();
}

void SessionHandle::end() {
  while (!guests.empty()) {
    auto guest = std::move(guests.back());
    guests.pop_back();
    letGo(guest);
  }
  if (!session) return;
  auto last = std::move(session);
  const bool isOwner = std::this_thread::get_id() == owner;
  if (ownTime && !isOwner) return leave(std::move(last));
  const Unlocked away;
  if (isOwner) awaitOthers(last);
  last.reset();
}

const std::shared_ptr<session::Session>& SessionHandle::get() const {
  if (!session) throw std::runtime_error("a session that lives expected, one that has ended given");
  return session;
}

void SessionHandle::run(ko::Duration duration) {
  const auto end = endOf(duration);
  const Use inUse(*this);
  do {
    const auto now = ko::Clock::now();
    const ko::Duration part = kSlice - now.time_since_epoch() % kSlice;
    ask([&](session::Session& session) {
      session.run(std::clamp<ko::Duration>(end - now, ko::Duration::zero(), part));
    });
    checkInterrupt();
  } while (ko::Clock::now() < end);
}

void SessionHandle::remove(const void* guest) {
  const auto found = std::find_if(guests.begin(), guests.end(),
                                  [&](const auto& each) { return each.get() == guest; });
  if (found == guests.end()) return;
  auto kept = std::move(*found);
  guests.erase(found);
  letGo(kept);
}

void SessionHandle::xCheckThread() const {
  InSensor::refuse();
  get();
  if (std::this_thread::get_id() != owner)
    throw std::runtime_error("the thread that opened the session expected, another one given");
}

SessionHandle::Use::Use(SessionHandle& handle) : handle(handle) {
  handle.xCheckThread();
  if (handle.busy)
    throw std::runtime_error("a session at rest expected, one that is running given");
  handle.busy = true;
}

}  // namespace QV::python
