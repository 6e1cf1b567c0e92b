#pragma once

#include <string>

#include "platform/api.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::robot {

/**
 * Reads a map_server map: a YAML file that names a PGM (P2, P5) or PNG image, by its own folder,
 * and says what its pixels mean (modes trinary, scale and raw). The image's last row is the map's
 * row 0. A colour counts as the mean of its channels; alpha is ignored. Whatever is wrong with
 * either file throws std::runtime_error, which names the file, where that helps the line and the
 * key, and what was expected.
 */
QV_API OccupancyMap loadMap(const std::string& yamlPath);

/**
 * Writes a map as `yamlPath` (*.yaml or *.yml) and a P5 PGM beside it. A map of free, unknown and
 * occupied cells alone comes back as it is, any other with its occupancies rounded to 1/255. A file
 * that can't be written throws std::runtime_error.
 */
QV_API void saveMap(const OccupancyMap& map, const std::string& yamlPath);

}  // namespace QV::robot
