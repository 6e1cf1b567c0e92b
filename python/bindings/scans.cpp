#include <algorithm>
#include <sched.h>
#include <span>

#include "platform/navigation/occ_map_simulate_scan.h"
#include "python/bindings/arrays.h"
#include "python/bindings/common.h"
#include "python/bindings/maps.h"

namespace QV::python {
namespace {

/**
 * The number of rays that are cast before somebody looks whether Ctrl-C was pressed: some 0.1 s.
 */
constexpr py::ssize_t kRaysAtATime = 4'000'000;

int countProcessors() {
  cpu_set_t set;
  CPU_ZERO(&set);
  if (sched_getaffinity(0, sizeof(set), &set) != 0) return 1;
  return std::clamp(CPU_COUNT(&set), 1, 256);
}

std::string describeView(const Math::SensorFieldOfView2D& view) {
  const py::object format = py::str(
      "SensorFieldOfView2D(min_range={:.6g}, max_range={:.6g}, angular_range={:.6g}, "
      "ray_count={})");
  return format.attr("format")(view.minRange, view.maxRange, view.angularRange, view.rayCount)
      .cast<std::string>();
}

FloatArray simulateScans(const boost::shared_ptr<OccupancyMap>& given, const py::object& poses,
                         const Math::SensorFieldOfView2D& view, std::optional<int> threads,
                         float occupiedAbove) {
  const FloatArray rows =
      rowsFrom(poses, 3, "simulate_scans", "poses of shape (N, 3): x, y (m), theta (rad)");
  const OccupancyMap& map = *given;
  // A scan from no pose checks the arguments before memory for all is allocated.
  const int sharers = threads.value_or(countProcessors());
  occMapSimulateScans(map, {}, view, {}, occupiedAbove, sharers);
  prepareForRays(given, occupiedAbove);
  const py::ssize_t count = rows.shape(0);
  FloatArray ranges(std::vector<py::ssize_t>{count, view.rayCount});
  const py::ssize_t block = std::max<py::ssize_t>(kRaysAtATime / view.rayCount, 1);
  for (py::ssize_t begin = 0; begin < count; begin += block) {
    const auto poseCount = static_cast<std::size_t>(std::min(block, count - begin));
    const std::span from(reinterpret_cast<const Math::Pose2D*>(rows.data(begin, 0)), poseCount);
    const std::span to(ranges.mutable_data(begin, 0),
                       poseCount * static_cast<std::size_t>(view.rayCount));
    unlocked([&] { occMapSimulateScans(map, from, view, to, occupiedAbove, sharers); });
    checkInterrupt();
  }
  return ranges;
}

void bindSimulateScans(py::module_& module) {
  module.def(
      "simulate_scans", &simulateScans, py::arg("map").none(false), "poses"_a, "field_of_view"_a,
      "threads"_a = py::none(), py::kw_only(), "occupied_above"_a = OccupancyMap::kSolidAbove,
      R"(simulate_scans(map: OccupancyMap, poses: ArrayLike, field_of_view: SensorFieldOfView2D, threads: int | None = None, *, occupied_above: float = 0.4) -> NDArray[np.float32]

Casts a fan of rays from each of many poses. Returns the exact ranges in metres, shape (N, ray_count).

`poses` has the shape (N, 3): x, y in metres and theta in radians, in the map frame; C-contiguous
float32 is read without a copy. Rays go from the right edge of the aperture to the left; a full turn
starts at -pi. They stop at cells above `occupied_above`. A ray that meets nothing, or whose pose is not
finite, gives `max_range`. `threads` threads share the work, by default one for each processor; other
Python threads go on meanwhile. Raises ValueError for another shape, an invalid field of view or threads
outside 1 to 256.)");
}

}  // namespace

void bindScans(py::module_& module) {
  using Math::SensorFieldOfView2D;
  py::class_<SensorFieldOfView2D>(module, "SensorFieldOfView2D", R"(
The sector that a sensor covers in the plane, about the x axis of its frame. It never changes.)")
      .def(
          py::init<float, float, float, int>(), "min_range"_a, "max_range"_a, "angular_range"_a,
          "ray_count"_a,
          R"(__init__(min_range: float, max_range: float, angular_range: float, ray_count: int) -> None

Takes ranges in metres and the full aperture in radians.)")
      .def_readonly("min_range", &SensorFieldOfView2D::minRange,
                    "float: The minimum range, metres.")
      .def_readonly("max_range", &SensorFieldOfView2D::maxRange,
                    "float: The maximum range, metres.")
      .def_readonly("angular_range", &SensorFieldOfView2D::angularRange,
                    "float: The full aperture, radians.")
      .def_readonly("ray_count", &SensorFieldOfView2D::rayCount,
                    "int: The number of rays or samples.")
      .def(
          "__eq__",
          [](const SensorFieldOfView2D& view, const py::object& other) {
            return py::isinstance<SensorFieldOfView2D>(other) &&
                   view == other.cast<SensorFieldOfView2D>();
          },
          "other"_a, "__eq__(other: object) -> bool")
      .def("__repr__", &describeView);
  bindSimulateScans(module);
}

}  // namespace QV::python
