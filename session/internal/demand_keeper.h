#pragma once

#include <functional>
#include <string>

#include "session/internal/switches.h"
#include "session/session.h"

namespace QV::session {

/** Keeps the subscriptions that outlets demand. The switches must outlive it. */
class DemandKeeper {
 public:
  /** Called before each change. */
  using Told =
      std::function<void(const std::string& subscriber, const std::string& sensor, bool on)>;

  explicit DemandKeeper(Switches& switches) : switches(switches) {}
  /** Ends all subscriptions. */
  ~DemandKeeper() { set({}); }
  DemandKeeper(const DemandKeeper&) = delete;
  DemandKeeper& operator=(const DemandKeeper&) = delete;

  /**
   * Subscribes and unsubscribes the difference to the last demand, and logs it. A sensor whose
   * hardware throws is logged as a warning; the others go on.
   */
  void set(const Demand& wanted, const Told& told = {});

 private:
  /** Switches the sensors of `these` that are not in `butThese`. */
  void xSwitch(const Demand& these, const Demand& butThese, bool on, const Told& told) const;

  Switches& switches;
  Demand current;
};

}  // namespace QV::session
