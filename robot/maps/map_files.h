#pragma once

#include <string>

#include "platform/api.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::robot {

/**
 * Reads a map of ROS map_server: a YAML file with the path of its image, relative to the YAML file,
 * and the meaning of its pixels (modes trinary, scale and raw). The image is a PGM (P2, P5) or PNG.
 * Its last row is the map's row 0. A colour pixel is read as the mean of its channels; alpha is
 * ignored. Throws std::runtime_error for a bad file, or a picture of more than 2^28 pixels. Its
 * text names the file, the line and the key if that helps, and what was expected. Logs a warning
 * for a map so far from zero that a position in it, a float, is coarser than a millimetre.
 * `shift`: the map is held with its zero there.
 */
QV_API OccupancyMap loadMap(const std::string& yamlPath, const MapShift& shift = {});

/** Returns the origin in a map's YAML file, rounded to whole metres. Throws as loadMap(). */
QV_API MapShift readOriginShift(const std::string& yamlPath);

/**
 * Writes a map as `yamlPath` (*.yaml or *.yml) and a P5 PGM beside it; its shift is added to the
 * origin. A map that has only free, unknown and occupied cells is stored exactly; other occupancies
 * are rounded to 1/255. Throws std::runtime_error if a file can't be written.
 */
QV_API void saveMap(const OccupancyMap& map, const std::string& yamlPath);

}  // namespace QV::robot
