#include "session/internal/command.h"

#include <cmath>

#include "session/session.h"
#include "session/usage_error.h"

namespace QV::session {
namespace {

/** Executes each command. */
struct Execution {
  void operator()(const SubscribeCommand& command) const {
    if (command.on) {
      session.subscribe(subscriber, {command.sensor});
    } else {
      session.unsubscribe(subscriber, {command.sensor});
    }
  }
  void operator()(const EnableCommand& command) const {
    session.enable(command.sensor, command.on);
  }
  void operator()(const DiagnoseCommand& command) const {
    session.diagnose(command.sensor, command.value);
  }
  void operator()(const DriveCommand& command) const {
    session.drive(command.forward, command.turn);
  }
  void operator()(const GoalCommand& command) const { session.setGoal(command.position); }
  void operator()(const StopCommand&) const { session.stop(); }
  void operator()(const PauseCommand& command) const { session.pause(command.on); }
  void operator()(const StepCommand&) const {
    if (!session.isPaused()) throw UsageError("can't step while time runs; pause first");
    session.step();
  }
  void operator()(const SpeedCommand& command) const { session.setSpeed(command.value); }
  void operator()(const SeekCommand& command) const {
    session.seek(ko::Duration(std::llround(1e9 * command.time)));
  }
  void operator()(const FaultCommand& command) const {
    if (!command.kind) return session.clearFault(command.sensor);
    session.setFault({command.sensor, *command.kind});
  }

  Session& session;
  const std::string& subscriber;
};

}  // namespace

void execute(Session& session, const std::string& subscriber, const Command& command) {
  std::visit(Execution{session, subscriber}, command);
}

}  // namespace QV::session
