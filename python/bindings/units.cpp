#include "python/bindings/common.h"
#include "robot/world/units/unit_factory.h"

namespace QV::python {
namespace {

using robot::SensorUnit;
using robot::UnitContext;
using robot::UnitFactory;

/** A unit whose measuring is written in Python. */
class PythonUnit : public SensorUnit {
 public:
  using SensorUnit::SensorUnit;

  void measure(ko::Clock::time_point now) override {
    callPython([&] {
      const py::function function =
          py::get_override(static_cast<const PythonUnit*>(this), "measure");
      if (!function) throw std::runtime_error("a method measure expected, none is there");
      function(now);
    });
  }
};

/** The robot's part of one: both of Python's halves live as long. */
class UnitKeeper : public SensorUnit {
 public:
  explicit UnitKeeper(std::shared_ptr<PythonUnit> kept)
      : SensorUnit(kept->getName(), kept->getPeriod()), unit(std::move(kept)) {}

  void measure(ko::Clock::time_point now) override { unit->measure(now); }

 private:
  const std::shared_ptr<PythonUnit> unit;
};

std::unique_ptr<SensorUnit> create(PyObject* creator, const Model::SensorConfig& config,
                                   const UnitContext& context) {
  return callPython([&]() -> std::unique_ptr<SensorUnit> {
    static const py::handle type = typeNamed("UnitOrder");
    const py::object made = py::handle(creator)(
        type(config.name, config.properties, config.memoryKeys, UnitContext(context)));
    if (made.is_none()) return nullptr;
    if (!py::isinstance<PythonUnit>(made))
      throw py::type_error("a SensorUnit or None expected, " + describe(made) + " given");
    return std::make_unique<UnitKeeper>(shareWithPython<std::shared_ptr, PythonUnit>(made));
  });
}

}  // namespace

void bindUnits(py::module_& module) {
  py::class_<PythonUnit, std::shared_ptr<PythonUnit>>(module, "SensorUnit", R"(
Measures for a sensor of a virtual robot: derive from it and define `measure(now: int) -> None`. The
robot calls that once per period, after the body has moved, on any thread; `now` is in nanoseconds of
clock(). An exception is logged.)")
      .def(py::init<const std::string&, ko::Duration>(), "name"_a, "period"_a,
           "__init__(name: str, period: int) -> None\n\nTakes a name for the log and a period in "
           "nanoseconds; 0 means each step of the robot.")
      .def_property_readonly("name", &SensorUnit::getName, "str: The name for the log.")
      .def_property_readonly("period", &SensorUnit::getPeriod, "int: The period, nanoseconds.");
  bindUnitContext(module);
  py::class_<UnitFactory>(module, "UnitFactory", R"(
Creates the units that measure for the sensors of a virtual robot, by their types.)")
      .def(py::init([] { return UnitFactory::standard(); }),
           "__init__() -> None\n\nCreates a factory with the library's own types.")
      .def(
          "add",
          [](UnitFactory& factory, int type, const py::function& creator) {
            factory.add(type, [kept = keep(creator)](const auto& config, const auto& context) {
              return create(kept.get(), config, context);
            });
          },
          "type"_a, "creator"_a,
          R"(add(type: int, creator: Callable[[UnitOrder], SensorUnit | None]) -> None

Adds a type. The creator returns the unit of each sensor of that type, or None for a sensor without a
unit. Raises ValueError for a known type.)");
}

}  // namespace QV::python
