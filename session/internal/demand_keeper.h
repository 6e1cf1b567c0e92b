#pragma once

#include <functional>
#include <string>

#include "session/internal/switches.h"
#include "session/session.h"

namespace QV::session {

/** Keeps subscriptions to what is demanded. The switches must outlive it. */
class DemandKeeper {
 public:
  /** Told of each change before it is made. */
  using Told =
      std::function<void(const std::string& subscriber, const std::string& sensor, bool on)>;

  explicit DemandKeeper(Switches& switches) : switches(switches) {}
  /** Nobody wants anything any more. */
  ~DemandKeeper() { set({}); }
  DemandKeeper(const DemandKeeper&) = delete;
  DemandKeeper& operator=(const DemandKeeper&) = delete;

  /**
   * Subscribes and unsubscribes where this differs from the demand before, and says so in the log.
   * A sensor whose hardware throws is a warning there, and the others go on.
   */
  void set(const Demand& wanted, const Told& told = {});

 private:
  /** Switches those of `these` that are not among `butThese`. */
  void xSwitch(const Demand& these, const Demand& butThese, bool on, const Told& told) const;

  Switches& switches;
  Demand current;
};

}  // namespace QV::session
