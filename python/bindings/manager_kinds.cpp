#include <boost/make_shared.hpp>

#include "platform/navigation/occupancy_map.h"
#include "python/bindings/common.h"
#include "python/bindings/manager_handle.h"
#include "sensor/real/real_sensor_manager.h"
#include "sensor/simulation/simulated_sensor_manager.h"

namespace QV::python {
namespace {

/** A simulated robot's sensors and their map. */
class MapKeeper : public sensor::SimulatedSensorManager {
 public:
  MapKeeper(int kind, boost::shared_ptr<OccupancyMap> kept)
      : SimulatedSensorManager(kind, kept.get()), map(std::move(kept)) {}

 private:
  const boost::shared_ptr<OccupancyMap> map;
};

void bindSimulated(py::module_& module) {
  using Handle = SimulatedManagerHandle;
  py::class_<Handle, ManagerHandle, std::shared_ptr<Handle>>(module, "SimulatedSensorManager", R"(
Manages the sensors of a simulated robot, which cast rays into a map. Every reading measures anew.)")
      .def(py::init([](int kind, boost::shared_ptr<OccupancyMap> map) {
             return std::make_shared<Handle>(std::make_shared<MapKeeper>(kind, std::move(map)));
           }),
           "kind"_a, "map"_a,
           R"(__init__(kind: int, map: OccupancyMap | None) -> None

Creates the sensors of a kind: -1 (one laser all around), 0 (two sonars) or 1 (bumpers, sonars, depth
camera). Any other kind has no sensors, which is logged. Without a map records have no points.)")
      .def(
          "set_pose_2d",
          [](const Handle& handle, const Math::Pose2D& scan, std::optional<Math::Pose2D> robot) {
            handle.ask([&](auto& manager) { manager.setPose2D(scan, robot.value_or(scan)); });
          },
          "scan_pose"_a, "reference_pose"_a = py::none(),
          R"(set_pose_2d(scan_pose: PoseLike, reference_pose: PoseLike | None = None) -> None

Sets the pose that rays start from and the robot's pose in the records, by default the same. Both are
in the map.)");
}

void bindReal(py::module_& module) {
  using Handle = RealManagerHandle;
  py::class_<Handle, ManagerHandle, std::shared_ptr<Handle>>(module, "RealSensorManager", R"(
Manages the sensors of the robot behind a broker, virtual or not, as its description lists them.

While any sensor runs, a refresh reads the started sensors every 100 ms of clock().)")
      .def(py::init(
               [](const boost::shared_ptr<QVBroker>& broker, const sensor::SensorFactory* factory) {
                 const auto& makes = factory ? *factory : sensor::SensorFactory::standard();
                 return std::make_shared<Handle>(patiently([broker, makes] {
                   return std::make_shared<sensor::RealSensorManager>(broker, makes);
                 }));
               }),
           "broker"_a, "factory"_a = py::none(),
           R"(__init__(broker: Broker, factory: SensorFactory | None = None) -> None

Builds the sensors whose types `factory` knows, by default the library's own. A sensor that can't be
built is logged and left out.)");
}

}  // namespace

void bindManagerKinds(py::module_& module) {
  bindSimulated(module);
  bindReal(module);
}

}  // namespace QV::python
