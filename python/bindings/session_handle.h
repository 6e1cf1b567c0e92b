#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include "python/bindings/common.h"
#include "python/bindings/ending.h"
#include "python/bindings/in_sensor.h"
#include "python/bindings/waiting.h"
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
  void close() override;
  void end() override;

  /** Thread-safe; RuntimeError if it has ended. */
  const std::shared_ptr<session::Session>& get() const;

  /** Calls the session, from any thread; see askUnlocked. */
  template <typename Call>
  auto ask(Call call) const {
    InSensor::refuse();
    return askUnlocked(get(), std::move(call));
  }

  /** Calls what may wait for hardware; see askPatiently. */
  template <typename Call>
  auto await(Call call) const {
    InSensor::refuse();
    return askPatiently(get(), std::move(call));
  }

  /** The same as `ask`, on the thread that opened it; also from a module that runs in it. */
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

  /**
   * The same for what may wait for hardware: Ctrl-C ends the waiting, and the session is in use
   * until the call is through.
   */
  template <typename Call>
  auto useAside(Call call) {
    auto inUse = std::make_unique<Use>(*this);
    InSensor::refuse();
    try {
      return patiently([inUse = std::move(inUse), own = get(), call = std::move(call)]() mutable {
        return call(*own);
      });
    } catch (py::error_already_set&) {
      xLeave();
      throw;
    }
  }

  /** Lets time go by, in pieces between which Ctrl-C is looked for. */
  void run(ko::Duration duration);

  /**
   * Adds what has to go before the session does. `before` is called before each piece of a run,
   * while other threads may run Python.
   */
  void add(std::shared_ptr<void> guest, std::function<void()> before = {});
  /** Waits for the end of a call that Ctrl-C has left, but for Ctrl-C. */
  void awaitRest() const;
  /** Ends a guest unless such a call goes on, which may wait for hardware: Ctrl-C ends the waiting.
   */
  void remove(const void* guest);
  /** Does what guests do before a piece of a run. */
  void prepare();

 private:
  /** The state: whether a call is under way, or one that Ctrl-C has left. */
  enum class State { idle, inUse, left };

  class Use {
   public:
    explicit Use(const SessionHandle& handle);
    ~Use() { *state = State::idle; }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;

   private:
    const std::shared_ptr<std::atomic<State>> state;
  };

  /** Leaves what goes on. */
  void xLeave();
  void xCheckThread() const;
  void xEndGuests();

  std::shared_ptr<session::Session> session;
  struct Guest {
    std::shared_ptr<void> guest;
    std::function<void()> before;
  };
  std::vector<Guest> guests;
  const std::thread::id owner = std::this_thread::get_id();
  /** The move of its own time. */
  std::unique_ptr<MovesTime> moves;
  const std::shared_ptr<std::atomic<State>> state =
      std::make_shared<std::atomic<State>>(State::idle);
};

using SessionClass = pybind11::class_<SessionHandle, std::shared_ptr<SessionHandle>>;

/** Returns those that are named, or all families. */
std::set<std::string> namesIn(const SessionHandle& handle, const Names& names);

void bindSessionSwitches(SessionClass& type);
void bindSessionDriving(SessionClass& type);
void bindSessionFaults(SessionClass& type);
void bindSessionTime(SessionClass& type);
void bindOpening(pybind11::module_& module);

}  // namespace QV::python
