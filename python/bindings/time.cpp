#include <thread>

#include "platform/ko/simulated_time.h"
#include "python/bindings/common.h"
#include "python/bindings/ending.h"
#include "python/bindings/in_sensor.h"
#include "python/bindings/waiting.h"

namespace QV::python {
namespace {

/** The simulated time between two looks whether Ctrl-C was pressed. */
constexpr ko::Duration kAdvance{100'000'000};

class TimeHandle : public Ending {
 public:
  explicit TimeHandle(ko::Clock::time_point start) : start(start) {}
  ~TimeHandle() override { end(); }

  void begin() {
    if (time) throw std::runtime_error("a SimulatedTime that has not begun expected");
    time = std::make_shared<ko::SimulatedTime>(start);
    moves.emplace();
  }
  void end() override {
    letGo(time);
    moves.reset();
  }

  void advance(ko::Duration duration) {
    const auto target = endOf(duration);
    InSensor::refuse();
    auto kept = time;
    if (!kept) throw std::runtime_error("a SimulatedTime in its with block expected");
    do {
      const ko::Duration left = target - ko::Clock::now();
      const ko::Duration part = std::clamp(left, ko::Duration::zero(), kAdvance);
      unlocked([&] { kept->advance(part); });
      checkInterrupt();
    } while (time && ko::Clock::now() < target);
    letGo(kept);
  }

 private:
  const ko::Clock::time_point start;
  std::shared_ptr<ko::SimulatedTime> time;
  std::optional<MovesTime> moves;
};

ko::log::Level levelFrom(const std::string& name) {
  using ko::log::Level;
  for (const auto level :
       {Level::silent, Level::fatal, Level::error, Level::warning, Level::info, Level::verbose}) {
    if (name == ko::log::getName(level)) return level;
  }
  throw py::value_error(
      "\"silent\", \"fatal\", \"error\", \"warning\", \"info\" or \"verbose\" expected, \"" + name +
      "\" given");
}

}  // namespace

void bindTime(py::module_& module) {
  py::class_<TimeHandle, std::shared_ptr<TimeHandle>>(module, "SimulatedTime", R"(
Takes the clock over for a `with` block: time stands still until it is advanced, and what falls due
then runs in order, the same every time. Make robots and managers within it. One at a time.)")
      .def(py::init<ko::Clock::time_point>(), "start"_a = ko::Clock::time_point(),
           "__init__(start: int = 0) -> None\n\nNanoseconds on the clock.")
      .def(
          "__enter__",
          [](const py::object& self) {
            self.cast<TimeHandle&>().begin();
            return self;
          },
          "__enter__() -> SimulatedTime\n\nAnother one that has the clock: RuntimeError.")
      .def("__exit__", [](TimeHandle& self, const py::args&) { self.end(); })
      .def("advance", &TimeHandle::advance, "duration"_a,
           R"(advance(duration: int) -> None

Moves time on by nanoseconds and runs what falls due. On the thread that made it; on another one, or
outside the block: RuntimeError. A negative duration: ValueError.)");

  module.def(
      "clock", [] { return ko::Clock::now(); },
      "clock() -> int\n\nThe time of all records, nanoseconds: since the process began, or "
      "simulated.");
  module.def(
      "set_log_level",
      [](const std::string& level, const std::optional<std::string>& category) {
        if (category) return ko::log::setLevel(*category, levelFrom(level));
        ko::log::setLevel(levelFrom(level));
      },
      "level"_a, "category"_a = py::none(),
      R"(set_log_level(level: LogLevel, category: str | None = None) -> None

What standard error shows: "silent", "fatal", "error", "warning" (at first), "info" or "verbose"; of
one category, such as "Navigation.LaserSensor", for all who listen.)");
}

}  // namespace QV::python
