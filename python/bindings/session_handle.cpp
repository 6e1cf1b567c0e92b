#include "python/bindings/session_handle.h"

#include <algorithm>

namespace QV::python {
namespace {

/** A session steers its robot so often: pieces that end there are those of a whole run. */
constexpr ko::Duration kSlice{20'000'000};

}  // namespace

SessionHandle::SessionHandle(std::shared_ptr<session::Session> session)
    : session(std::move(session)) {}

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
  letGo(session);
}

const std::shared_ptr<session::Session>& SessionHandle::get() const {
  if (!session) throw std::runtime_error("a session that lives expected, one that has ended given");
  return session;
}

void SessionHandle::run(ko::Duration duration) {
  if (duration < ko::Duration::zero())
    throw py::value_error("a duration of 0 ns or more expected, " +
                          std::to_string(duration.count()) + " given");
  const Use inUse(*this);
  const auto begin = ko::Clock::now();
  const auto end = begin + std::min<ko::Duration>(duration, ko::Clock::time_point::max() - begin);
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
