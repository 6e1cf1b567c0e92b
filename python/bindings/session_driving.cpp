#include <chrono>
#include <cmath>

#include "python/bindings/session_handle.h"
#include "session/internal/goal_search.h"

namespace QV::python {
namespace {

using session::Session;

void drive(const SessionHandle& handle, float forward, float turn) {
  if (!std::isfinite(forward) || !std::isfinite(turn))
    throw py::value_error("finite speeds expected, " + std::to_string(forward) + ", " +
                          std::to_string(turn) + " given");
  handle.look([&](Session& session) { session.drive(forward, turn); });
}

/** Plans on another thread: on a large map that takes seconds, which Ctrl-C ends. */
void setGoal(SessionHandle& handle, const Math::Position2D& position) {
  constexpr std::chrono::milliseconds kLook{20};
  handle.use([&](Session& session) {
    session::GoalSearch search(session, position);
    do {
      while (!search.waitFor(kLook)) {
        const Locked locked;
        checkInterrupt();
      }
    } while (!search.finish());
  });
}

ko::Duration follow(SessionHandle& handle, const std::vector<Math::Position2D>& path, double speed,
                    double turnSpeed) {
  const double seconds =
      handle.use([&](Session& session) { return session.follow(path, speed, turnSpeed); });
  return ko::Duration(std::llround(1e9 * seconds));
}

Math::Pose2D getSessionPose(const SessionHandle& handle) {
  return handle.look([](Session& session) { return session.getPose(); });
}

void setSessionPose(SessionHandle& handle, const Math::Pose2D& pose) {
  handle.use([&](Session& session) { session.setPose(pose); });
}

}  // namespace

void bindSessionDriving(SessionClass& type) {
  type.def("drive", &drive, "forward"_a, "turn"_a,
           "drive(forward: float, turn: float) -> None\n\nDrives forward (m/s) and turns left "
           "(rad/s), until another command. In a LiveServer a command lasts half a second.")
      .def("set_goal", &setGoal, "position"_a,
           R"(set_goal(position: PositionLike) -> None

Plans a path to a position in the map. The robot follows it as the session runs. Raises ValueError if
there is none.)")
      .def(
          "follow", &follow, "path"_a, "speed"_a = 0.5, "turn_speed"_a = 1.0,
          R"(follow(path: Sequence[PositionLike], speed: float = 0.5, turn_speed: float = 1.0) -> int

Follows straight lines through two positions or more, in the map, while the session runs; turns on the
spot at corners. `speed` in m/s, `turn_speed` in rad/s. Returns the nanoseconds that this takes.)")
      .def(
          "wander", [](SessionHandle& self) { self.use([](Session& s) { s.wander(); }); },
          "wander() -> None\n\nDrives about where there is room.")
      .def(
          "stop", [](SessionHandle& self) { self.look([](Session& s) { s.stop(); }); },
          "stop() -> None\n\nStops the robot.")
      .def_property("pose", &getSessionPose, &setSessionPose,
                    "Pose2D: The robot's pose in the map.");
}

}  // namespace QV::python
