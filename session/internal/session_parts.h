#pragma once

#include <memory>
#include <utility>

#include "platform/ko/simulated_time.h"
#include "session/internal/demand_keeper.h"
#include "session/internal/driver.h"
#include "session/internal/listener_list.h"
#include "session/internal/make_session.h"
#include "session/internal/pacing.h"
#include "session/internal/sensor_look.h"
#include "session/internal/session_robot.h"
#include "session/internal/switches.h"
#include "session/internal/touch_look.h"

namespace QV::session {

/** The parts of a session; each needs those above it. */
struct SessionParts {
  /** `time` is null for real time, and for a time that somebody else owns. */
  SessionParts(std::unique_ptr<ko::SimulatedTime> ownTime, std::unique_ptr<SessionRobot> ownRobot)
      : time(std::move(ownTime)), robot(std::move(ownRobot)) {
    sensorLook.notePose();
  }

  static SessionParts& of(Session& session) { return *session.parts; }
  static std::unique_ptr<Session> makeSession(std::unique_ptr<SessionParts> parts) {
    return std::unique_ptr<Session>(new Session(std::move(parts)));
  }

  /** Puts a recording's new robot, which `make` makes, in place of the old one and its time. */
  QV_API static void replace(Session& session, const std::function<TimedRobot()>& make);

  void tell(const SessionCommand& command) const { listeners->onCommand(command); }
  /** Notes what changes more often than somebody looks. */
  void notePlace() {
    sensorLook.notePose();
    touchLook.note();
  }
  void note() {
    notePlace();
    sensorLook.noteMeasurements();
  }

  const std::unique_ptr<ko::SimulatedTime> time;
  const std::unique_ptr<SessionRobot> robot;
  Switches switches{*robot};
  DemandKeeper demand{switches};
  Driver driver{*robot};
  Pacing pacing;
  SensorLook sensorLook{*robot, switches};
  TouchLook touchLook{*robot};
  std::shared_ptr<ListenerList> listeners = std::make_shared<ListenerList>();
  /** Null if nothing can be played again. */
  Reopen reopen;
};

QV_API SessionRobot& robotOf(Session& session);

}  // namespace QV::session
