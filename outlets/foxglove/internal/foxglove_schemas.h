#pragma once

#include <string>

namespace QV::outlets::foxglove {

/** The JSON schema of "foxglove.FrameTransform", "foxglove.Grid", "foxglove.Log" or
 * "foxglove.PointCloud". */
std::string schemaText(const std::string& name);

}  // namespace QV::outlets::foxglove
