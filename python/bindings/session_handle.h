#pragma once

#include <functional>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include "outlets/web/live_server.h"
#include "python/bindings/common.h"
#include "python/bindings/ending.h"
#include "python/bindings/in_sensor.h"
#include "session/session.h"

namespace QV::python {

/**
 * A session as Python sees it. But for the switches it is for the thread that opened it, and one
 * call at a time: a sensor or a module that runs meanwhile may not end it, for one.
 */
class SessionHandle : public Ending {
 public:
  /** `ownTime` says that simulated time is its own. */
  SessionHandle(std::shared_ptr<session::Session> session, bool ownTime);
  ~SessionHandle() override;

  bool isOpen() const { return session != nullptr; }
  /** RuntimeError while it runs, or on another thread. */
  void close();
  void end() override;

  /** Safe from any thread; RuntimeError if it has ended. */
  const std::shared_ptr<session::Session>& get() const;

  /** Calls the session, from any thread. */
  template <typename Call>
  auto ask(Call call) const {
    InSensor::refuse();
    auto kept = get();
    return unlocked([&] {
      const auto own = std::move(kept);
      return call(*own);
    });
  }

  /** The same, on the thread that opened it; also from a module that runs in it. */
  template <typename Call>
  auto look(Call call) const {
    xCheckThread();
    return ask(call);
  }

  /** The same, once at a time. */
  template <typename Call>
  auto use(Call call) {
    const Use inUse(*this);
    return ask(call);
  }

  /** Lets time go by, in pieces between which Ctrl-C is looked for. */
  void run(ko::Duration duration);

  /** What has to go before the session does. */
  void add(std::shared_ptr<void> guest) { guests.push_back(std::move(guest)); }
  void remove(const void* guest);

 private:
  class Use {
   public:
    explicit Use(SessionHandle& handle);
    ~Use() { handle.busy = false; }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;

   private:
    SessionHandle& handle;
  };

  void xCheckThread() const;

  std::shared_ptr<session::Session> session;
  std::vector<std::shared_ptr<void>> guests;
  const std::thread::id owner = std::this_thread::get_id();
  const bool ownTime;
  bool busy = false;
};

}  // namespace QV::python
