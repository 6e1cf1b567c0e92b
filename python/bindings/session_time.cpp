#include <cmath>

#include "python/bindings/session_handle.h"
#include "sensor/core/scoped_subscription.h"
#include "session/internal/session_parts.h"

namespace QV::python {
namespace {

using session::Session;
using session::SessionParts;

/** A property that a session tells on its own thread. */
template <auto get>
auto told() {
  return [](const SessionHandle& self) {
    return self.look([](Session& session) { return (session.*get)(); });
  };
}

std::map<std::string, std::string> awaitSession(SessionHandle& handle, ko::Duration limit,
                                                const Names& names) {
  constexpr ko::Duration kPoll{10'000'000};
  const auto wanted = namesIn(handle, names);
  const auto end = endOf(limit);
  for (;;) {
    auto missing = handle.use(
        [&](Session& session) { return sensor::findMissingRecords(session.getManager(), wanted); });
    const auto left = end - ko::Clock::now();
    if (missing.empty() || left <= ko::Duration::zero()) return missing;
    handle.run(std::min<ko::Duration>(left, kPoll));
  }
}

/** Goes to a recording's beginning. A large one that was cut is read whole, which Ctrl-C ends. */
void rewind(SessionHandle& handle) {
  const auto reopen = handle.use([](Session& session) { return SessionParts::of(session).reopen; });
  // What can't be played again is refused there.
  if (!reopen) return handle.use([](Session& session) { session.seek(ko::Duration::zero()); });
  const auto make = aside([reopen] { return reopen(); });
  handle.use([&](Session& session) { SessionParts::replace(session, make); });
}

/** Plays in pieces between which Ctrl-C is looked for, from the beginning if it has to. */
void seek(SessionHandle& handle, ko::Duration sinceStart) {
  const auto target = std::max<ko::Duration>(sinceStart, ko::Duration::zero());
  const auto getLeft = [&] {
    return handle.use([&](Session& session) {
      return target - (ko::Clock::now() - session::robotOf(session).getStart());
    });
  };
  const bool isRecording =
      handle.use([](Session& session) { return session.getLength().has_value(); });
  if (!isRecording || getLeft() < ko::Duration::zero()) rewind(handle);
  handle.run(std::max<ko::Duration>(getLeft(), ko::Duration::zero()));
}

void setSpeed(const SessionHandle& handle, double speed) {
  if (!(speed > 0.0) || !std::isfinite(speed))
    throw py::value_error("a speed above 0 expected, " + std::to_string(speed) + " given");
  handle.look([&](Session& session) { session.setSpeed(speed); });
}

/** Binds the pace at which a server lets time go by. */
void bindPace(SessionClass& type) {
  type.def(
          "pause",
          [](const SessionHandle& self, bool on) {
            self.look([&](Session& session) { session.pause(on); });
          },
          "on"_a,
          "pause(on: bool) -> None\n\nPauses (True) or resumes a LiveServer. `run` still advances.")
      .def("set_speed", &setSpeed, "speed"_a,
           R"(set_speed(speed: float) -> None

Sets the speed of a LiveServer: simulated seconds per real second, above 0. Raises
ValueError for another one.)");
}

/** Binds the operations of a recording. */
void bindPlaying(SessionClass& type) {
  type.def("seek", &seek, "since_start"_a,
           R"(seek(since_start: int) -> None

Goes to a time of a recording, nanoseconds from its start. Going back replays from the start with a
new manager: subscribe again, and call `set_demand` again. Raises ValueError if `length` is None.)")
      .def_property_readonly("length", told<&Session::getLength>(),
                             "int | None: The length of an MCAP or rosbag2 recording, nanoseconds; "
                             "else None.")
      .def_property_readonly("share_done", told<&Session::getShareDone>(),
                             "float: The played share of a recording, 0 to 1.");
}

}  // namespace

void bindSessionTime(SessionClass& type) {
  type.def("run", &SessionHandle::run, "duration"_a,
           R"(run(duration: int) -> None

Advances the session by `duration` nanoseconds, simulated or real; Ctrl-C ends it. Raises ValueError for
a negative one.)")
      .def("await_records", &awaitSession, "limit"_a, "names"_a = py::none(),
           R"(await_records(limit: int, names: Names = None) -> dict[str, str]

Runs until each sensor, by default all, has a fresh record or a reason for none, but not longer than
`limit` nanoseconds. Returns the sensors without a record, each with the reason.)")
      .def(
          "step", [](SessionHandle& self) { return self.use([](Session& s) { return s.step(); }); },
          "step() -> bool\n\nA recording: plays the next step, False at the end. Any "
          "other session: runs for 0.1 s.")
      .def_property_readonly(
          "settling_time", told<&Session::getSettlingTime>(),
          "int: The time from a subscription to the first record of every sensor, "
          "nanoseconds.");
  bindPace(type);
  bindPlaying(type);
}

}  // namespace QV::python
