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
What units of a virtual robot measure, and where they write. Thread-safe.)")
      .def("cast_ray", &castRay, "sensor"_a, "reach"_a,
           R"(cast_ray(sensor: str, reach: float) -> float

How far it is, in metres, to what lies ahead along the x axis of a sensor, joint or link: infinity
for nothing up to `reach`. An unknown name: ValueError.)")
      .def(
          "read",
          [](const UnitContext& context, const std::string& key) {
            return unlocked([&] { return context.read(key); });
          },
          "key"_a, "read(key: str) -> Value\n\nOf the robot's memory; no such key: QVError.")
      .def(
          "write",
          [](const UnitContext& context, const std::string& key, const QVValue& value) {
            unlocked([&] { context.write(key, value); });
          },
          "key"_a, "value"_a,
          "write(key: str, value: Value) -> None\n\nA type that the key can't take: QVError.")
      .def(
          "withdraw",
          [](const UnitContext& context, const std::string& key) {
            unlocked([&] { context.withdraw(key); });
          },
          "key"_a, "withdraw(key: str) -> None\n\nLeaves no number in a key.");
}

void bindHelpers(py::module_& module) {
  py::class_<Channel>(module, "FaultChannel", R"(
What a sensor that may be made to fail gives out for what it measures.)")
      .def(
          py::init([](const UnitContext& context, const std::string& sensor,
                      const py::function& garble, const py::function& falsify) {
            return std::make_unique<Channel>(context.getFaults(sensor), distortion(garble),
                                             distortion(falsify));
          }),
          "context"_a, "sensor"_a, "garble"_a, "falsify"_a,
          R"(__init__(context: UnitContext, sensor: str, garble: Callable[[float], float], falsify: Callable[[float], float]) -> None

`garble` makes nonsense of a measurement, `falsify` something believable that is not so.)")
      .def("pass_on", &pass, "value"_a, "now"_a,
           R"(pass_on(value: float, now: int) -> float | None

Its newest sample, which may be the one before; None while it is gone.)");
  py::class_<robot::RangeNoise>(module, "RangeNoise", R"(
What a real sensor makes of true ranges, as the world's options say.)")
      .def(py::init([](const UnitContext& context, const std::string& sensor) {
             return std::make_unique<robot::RangeNoise>(context.getOptions(), sensor);
           }),
           "context"_a, "sensor"_a, "__init__(context: UnitContext, sensor: str) -> None")
      .def("apply", &robot::RangeNoise::apply, "range"_a,
           "apply(range: float) -> float\n\nMetres; infinity when it is lost.");
}

}  // namespace

void bindUnitContext(py::module_& module) {
  bindContext(module);
  bindHelpers(module);
}

}  // namespace QV::python
