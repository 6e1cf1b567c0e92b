#include "python/bindings/session_handle.h"

#include <algorithm>
#include <chrono>

namespace QV::python {
namespace {

/** A session steers its robot so often: pieces that end there are those of a whole session. */
constexpr ko::Duration kSlice{20'000'000};

/**
 * Waits for those who are in a call of the session still, half a minute at most. They may wait for
 * hardware in simulated time, which nobody but this thread moves if it is `moving`.
 */
void awaitOthers(const std::shared_ptr<session::Session>& last, bool moving) try {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (last.use_count() > 1 && std::chrono::steady_clock::now() < end) {
    if (moving) last->run(kSlice);
    // Other threads get the processor now and then.
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
} catch (const std::exception&) {
  // The session ends anyway.
}

/**
 * Leaves the session for good: stopping hardware would wait for time that the thread that opened it
 * has to move.
 */
void leave(std::shared_ptr<session::Session> session) {
  new std::shared_ptr<session::Session>(std::move(session));
  if (PyErr_WarnEx(PyExc_ResourceWarning,
                   "a session that was not closed on the thread that opened it stays for good", 1))
    PyErr_WriteUnraisable(nullptr);
}

}  // namespace

SessionHandle::SessionHandle(std::shared_ptr<session::Session> session, bool ownTime)
    : session(std::move(session)), moves(ownTime ? std::make_unique<MovesTime>() : nullptr) {}

SessionHandle::~SessionHandle() {
  end();
}

void SessionHandle::close() {
  awaitRest();
  if (!session) return;
  const Use inUse(*this);
  if (!mayLeaveTime()) return end();
  xEndGuests();
  patiently([last = std::exchange(session, nullptr)]() mutable {
    awaitOthers(last, false);
    last.reset();
  });
}

void SessionHandle::end() {
  xEndGuests();
  if (!session) return;
  auto last = std::move(session);
  const bool isOwner = std::this_thread::get_id() == owner;
  if (moves && !isOwner) {
    // The session keeps its time.
    static_cast<void>(moves.release());
    return leave(std::move(last));
  }
  const bool moving = !mayLeaveTime() && *state != State::left;
  quietly([last = std::move(last), isOwner, moving]() mutable {
    if (isOwner) awaitOthers(last, moving);
    last.reset();
  });
  moves.reset();
}

void SessionHandle::xEndGuests() {
  while (!guests.empty()) {
    auto last = std::move(guests.back());
    guests.pop_back();
    // One that Ctrl-C leaves goes before the session does.
    quietly([own = session, guest = std::move(last.guest)]() mutable { guest.reset(); });
  }
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
    prepare();
    ask([&](session::Session& session) {
      session.run(std::clamp<ko::Duration>(end - now, ko::Duration::zero(), part));
    });
    checkInterrupt();
  } while (ko::Clock::now() < end);
}

void SessionHandle::add(std::shared_ptr<void> guest, std::function<void()> before) {
  guests.push_back({std::move(guest), std::move(before)});
}

void SessionHandle::remove(const void* guest) {
  InSensor::refuse();
  // It goes with the session.
  if (*state == State::left) return;
  const auto found = std::find_if(guests.begin(), guests.end(),
                                  [&](const auto& each) { return each.guest.get() == guest; });
  if (found == guests.end()) return;
  auto last = std::move(found->guest);
  guests.erase(found);
  if (*state != State::idle || std::this_thread::get_id() != owner) return letGo(last);
  useAside([last = std::move(last)](session::Session&) mutable { last.reset(); });
}

void SessionHandle::prepare() {
  // The list is copied, because a guest may add or remove guests.
  std::vector<Guest> all = guests;
  const Unlocked away;
  for (const Guest& each : all) {
    if (each.before) each.before();
  }
  all.clear();
}

void SessionHandle::xCheckThread() const {
  InSensor::refuse();
  get();
  if (std::this_thread::get_id() != owner)
    throw std::runtime_error("the thread that opened the session expected, another one given");
}

void SessionHandle::awaitRest() const {
  while (*state == State::left) {
    unlocked([] { std::this_thread::sleep_for(std::chrono::milliseconds(5)); });
    checkInterrupt();
  }
}

void SessionHandle::xLeave() {
  State under = State::inUse;
  state->compare_exchange_strong(under, State::left);
}

SessionHandle::Use::Use(const SessionHandle& handle) : state(handle.state) {
  handle.xCheckThread();
  State before = State::idle;
  if (!state->compare_exchange_strong(before, State::inUse))
    throw std::runtime_error("a session at rest expected, one that is running given");
}

}  // namespace QV::python
