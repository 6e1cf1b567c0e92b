#pragma once

#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "apps/picture/map_canvas.h"
#include "platform/math/metrical_data.h"

namespace QV::app {

/** The canvas on a page with a title above, and a legend, a scale bar and a caption below. */
cv::Mat withLegend(MapCanvas& canvas, const std::string& title,
                   const std::vector<Math::MetricalData>& records, bool hasPath);

}  // namespace QV::app
