#pragma once

#include "platform/api.h"
#include "platform/navigation/internal/grid_ray.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::detail {

/**
 * Walks a ray cell by cell: how far it goes, in cells, until it enters one whose occupancy is above
 * `occupiedAbove`; infinity when it meets none.
 */
QV_API double walkPlainly(const OccupancyMap& map, const GridRay& ray, float occupiedAbove);

}  // namespace QV::detail
