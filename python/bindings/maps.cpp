#include "python/bindings/maps.h"

#include <filesystem>

#include <boost/make_shared.hpp>

#include "platform/navigation/internal/map_inside.h"
#include "python/bindings/arrays.h"
#include "python/bindings/common.h"
#include "python/bindings/outlets.h"
#include "python/bindings/waiting.h"
#include "robot/maps/map_files.h"
#include "session/shared_files.h"

namespace QV::python {
namespace {

boost::shared_ptr<OccupancyMap> makeMap(const py::object& cells, float resolution,
                                        const Math::Pose2D& origin) {
  const FloatArray array = floatsFrom(cells, "OccupancyMap", "cells of shape (rows, columns)");
  if (array.ndim() != 2)
    throw py::value_error("OccupancyMap: cells of shape (rows, columns) expected, " +
                          shapeOf(array) + " given");
  constexpr py::ssize_t kMost = OccupancyMap::kMaxSide;
  if (array.shape(0) > kMost || array.shape(1) > kMost)
    throw py::value_error("OccupancyMap: at most " + std::to_string(kMost) +
                          " rows and columns expected, " + shapeOf(array) + " given");
  std::vector<float> values(array.data(), array.data() + array.size());
  return boost::make_shared<OccupancyMap>(static_cast<int>(array.shape(1)),
                                          static_cast<int>(array.shape(0)), resolution, origin,
                                          std::move(values));
}

py::array cellsOf(const py::object& self) {
  const auto& map = self.cast<const OccupancyMap&>();
  return readOnlyView(map.getCells().data(), map.getHeight(), map.getWidth(), self);
}

boost::shared_ptr<OccupancyMap> loadMap(const std::string& path) {
  try {
    return aside([path] { return boost::make_shared<OccupancyMap>(robot::loadMap(path)); });
  } catch (const std::runtime_error& error) {
    raiseFileError(path, error);
  }
}

std::string describeMap(const OccupancyMap& map) {
  return "<OccupancyMap of " + std::to_string(map.getHeight()) + " x " +
         std::to_string(map.getWidth()) + " cells of " + std::to_string(map.getResolution()) +
         " m>";
}

void saveMap(const boost::shared_ptr<OccupancyMap>& map, const py::object& path) {
  aside([map, file = pathFrom(path)] { writing([&] { robot::saveMap(*map, file); }); });
}

void bindMap(py::module_& module) {
  py::class_<OccupancyMap, boost::shared_ptr<OccupancyMap>>(module, "OccupancyMap", R"(
A grid of occupancies from 0 (free) to 1 (occupied); 0.5 is unknown. Cells above 0.4 are solid.

It never changes; to change cells, make a new map from `cells.copy()`. Thread-safe.)")
      .def(
          py::init(&makeMap), "cells"_a, "resolution"_a, "origin"_a = Math::Pose2D(),
          R"(__init__(cells: ArrayLike, resolution: float, origin: PoseLike = (0.0, 0.0, 0.0)) -> None

Copies cells of shape (rows, columns). `resolution` is the side of a cell, metres. `origin` is the pose
of the outer corner of cell (0, 0) in the map frame; row numbers grow along its y axis, column numbers
along its x axis. Raises ValueError for another shape, an occupancy outside 0 to 1, a resolution that is
not positive or an origin that is not finite.)")
      .def_property_readonly(
          "cells", &cellsOf,
          "NDArray[np.float32]: The occupancies, shape (rows, columns), a read-only view.")
      .def_property_readonly("resolution", &OccupancyMap::getResolution,
                             "float: The side of a cell, metres.")
      .def_property_readonly("origin", &OccupancyMap::getOrigin,
                             "Pose2D: The outer corner of cell (0, 0) in the map frame.")
      .def(
          "find_occupancy",
          [](const OccupancyMap& map, const Math::Position2D& position) {
            return map.findOccupancy(position);
          },
          "position"_a,
          R"(find_occupancy(position: PositionLike) -> float | None

Returns the occupancy at a position in the map frame; None outside the map.)")
      .def("__repr__", &describeMap);
}

void bindMapFiles(py::module_& module) {
  module.def(
      "load_map", [](const py::object& path) { return loadMap(session::findMap(pathFrom(path))); },
      "path"_a,
      R"(load_map(path: PathLike) -> OccupancyMap

Reads a map_server map, which is a YAML file that names a PGM or PNG image, or one of the library's own
maps by its name ("apartment"). Raises FileNotFoundError for a missing file. Raises ValueError for an
error in either file; it names the file, the line and what was expected.)");
  module.def("save_map", &saveMap, py::arg("map").none(false), "path"_a,
             R"(save_map(map: OccupancyMap, path: PathLike) -> None

Writes a map as a YAML file and a PGM image beside it. Raises OSError for a file that can't be written.)");
  module.def(
      "find_robot", [](const std::string& name) { return session::findRobot(name); }, "name"_a,
      R"(find_robot(name: str) -> str

Returns the path of a robot's description by its name ("porter"); returns a path as it is. Raises
ValueError for an unknown name; it lists the known ones.)");
}

}  // namespace

std::string pathFrom(const py::object& path) {
  return py::module_::import("os").attr("fspath")(path).cast<std::string>();
}

void raiseFileError(const std::string& path, const std::runtime_error& error) {
  std::error_code ignored;
  const bool isThere = std::filesystem::exists(path, ignored);
  PyErr_SetString(isThere ? PyExc_ValueError : PyExc_FileNotFoundError, error.what());
  throw py::error_already_set();
}

void prepareForRays(const boost::shared_ptr<OccupancyMap>& map, float occupiedAbove) {
  // A thread of its own is not worth while for others.
  constexpr std::size_t kLarge = 4'000'000;
  if (map->getCells().size() < kLarge) return;
  aside([map, occupiedAbove] { detail::MapInside::findStore(*map, occupiedAbove); });
}

void bindMaps(py::module_& module) {
  bindMap(module);
  bindMapFiles(module);
}

}  // namespace QV::python
