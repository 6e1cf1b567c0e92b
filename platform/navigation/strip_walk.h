#pragma once

#include <optional>

#include "platform/api.h"
#include "platform/navigation/grid_ray.h"
#include "platform/navigation/scan_store.h"

namespace QV::detail {

/**
 * Walks a ray over a store, four columns at a time: the same answer as walkPlainly over the cells,
 * to the last bit. Nothing for a ray that starts so far away that its line is not where it should
 * be.
 */
QV_API std::optional<double> walkStrips(const ScanStore& store, const GridRay& ray);

}  // namespace QV::detail
