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
Takes over the clock for a `with` block. Time stands still until it is advanced; whatever is due then
runs in order, the same in every run. Make robots and managers inside the block. Only one at a time.)")
      .def(
          py::init<ko::Clock::time_point>(), "start"_a = ko::Clock::time_point(),
          "__init__(start: int = 0) -> None\n\nSets the time at the start, nanoseconds of clock().")
      .def(
          "__enter__",
          [](const py::object& self) {
            self.cast<TimeHandle&>().begin();
            return self;
          },
          "__enter__() -> SimulatedTime\n\nTakes over the clock. While another one has it: "
          "RuntimeError.")
      .def("__exit__", [](TimeHandle& self, const py::args&) { self.end(); })
      .def("advance", &TimeHandle::advance, "duration"_a,
           R"(advance(duration: int) -> None

Advances time by `duration` nanoseconds and runs whatever is due. Call it inside the block, on the
thread that made it; else RuntimeError. Raises ValueError for a negative duration.)");

  module.def(
      "clock", [] { return ko::Clock::now(); },
      "clock() -> int\n\nReturns the time by which records are stamped, nanoseconds: since the "
      "process began, or simulated.");
  module.def(
      "set_log_level",
      [](const std::string& level, const std::optional<std::string>& category) {
        if (category) return ko::log::setLevel(*category, levelFrom(level));
        ko::log::setLevel(levelFrom(level));
      },
      "level"_a, "category"_a = py::none(),
      R"(set_log_level(level: LogLevel, category: str | None = None) -> None

Sets the level of standard error: "silent", "fatal", "error", "warning" (the default), "info" or
"verbose". If a category is given, such as "Navigation.LaserSensor", sets the level of that category
for all listeners.)");
}

}  // namespace QV::python
