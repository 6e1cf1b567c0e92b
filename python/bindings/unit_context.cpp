#include <cmath>

#include "python/bindings/common.h"
#include "robot/world/chance/range_noise.h"
#include "robot/world/faults/fault_channel.h"
#include "robot/world/units/unit_factory.h"

namespace QV::python {
namespace {

using robot::UnitContext;
using Channel = robot::FaultChannel<double>;

double castRay(const UnitContext& context, const std::string& sensor, float reach) {
  if (!std::isfinite(reach) || reach < 0.0f)
    throw py::value_error("a reach of 0 m or more expected, " + std::to_string(reach) + " given");
  return unlocked([&] {
    const robot::Surroundings& around = context.getSurroundings();
    const robot::Moment moment = around.getMoment();
    return around.castRay(robot::Ray::ahead(around.frameInMap(sensor, moment)), reach, moment);
  });
}

Channel::Distortion distortion(const py::function& function) {
  return [kept = keep(function)](double value) {
    return py::handle(kept.get())(value).cast<double>();
  };
}

std::optional<double> pass(Channel& channel, double value, ko::Clock::time_point now) {
  const auto sample = channel.pass(value, now);
  if (!sample) return {};
  return sample->value;
}

void bindContext(py::module_& module) {
  py::class_<UnitContext>(module, "UnitContext", R"(
The context of a virtual robot's units: its surroundings and its memory. Thread-safe.)")
      .def("cast_ray", &castRay, "sensor"_a, "reach"_a,
           R"(cast_ray(sensor: str, reach: float) -> float

Returns the range to the first obstacle along the x axis of a sensor, joint or link, metres; infinity if
nothing is within `reach`, metres. Raises ValueError for an unknown name.)")
      .def(
          "read",
          [](const UnitContext& context, const std::string& key) {
            return unlocked([&] { return context.read(key); });
          },
          "key"_a,
          "read(key: str) -> Value\n\nReads a key of the robot's memory. Raises QVError for an "
          "unknown key.")
      .def(
          "write",
          [](const UnitContext& context, const std::string& key, const QVValue& value) {
            unlocked([&] { context.write(key, value); });
          },
          "key"_a, "value"_a,
          "write(key: str, value: Value) -> None\n\nWrites a key of the robot's memory. Raises "
          "QVError for a type that the key can't take.")
      .def(
          "withdraw",
          [](const UnitContext& context, const std::string& key) {
            unlocked([&] { context.withdraw(key); });
          },
          "key"_a, "withdraw(key: str) -> None\n\nSets a key of the robot's memory to None.");
}

void bindHelpers(py::module_& module) {
  py::class_<Channel>(module, "FaultChannel", R"(
The output of a sensor that can have faults. Pass each measurement through it.)")
      .def(
          py::init([](const UnitContext& context, const std::string& sensor,
                      const py::function& garbage, const py::function& wrong) {
            return std::make_unique<Channel>(context.getFaults(sensor), distortion(garbage),
                                             distortion(wrong));
          }),
          "context"_a, "sensor"_a, "garbage"_a, "wrong"_a,
          R"(__init__(context: UnitContext, sensor: str, garbage: Callable[[float], float], wrong: Callable[[float], float]) -> None

Takes two functions, named after the faults: `garbage` turns a measurement into an impossible one, `wrong`
into a plausible but wrong one.)")
      .def("pass_on", &pass, "value"_a, "now"_a,
           R"(pass_on(value: float, now: int) -> float | None

Returns the newest sample, which may be the last one again; None while the sensor is gone. `now` is the
time of the measurement, nanoseconds of clock().)");
  py::class_<robot::RangeNoise>(module, "RangeNoise", R"(
The noise of a real sensor on true ranges, as the world's options say.)")
      .def(py::init([](const UnitContext& context, const std::string& sensor) {
             return std::make_unique<robot::RangeNoise>(context.getOptions(), sensor);
           }),
           "context"_a, "sensor"_a, "__init__(context: UnitContext, sensor: str) -> None")
      .def("apply", &robot::RangeNoise::apply, "range"_a,
           "apply(range: float) -> float\n\nAdds noise to a range, metres; infinity for a "
           "drop-out.");
}

}  // namespace

void bindUnitContext(py::module_& module) {
  bindContext(module);
  bindHelpers(module);
}

}  // namespace QV::python
