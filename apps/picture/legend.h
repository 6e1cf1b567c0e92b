#pragma once

#include <opencv2/core.hpp>

#include "apps/picture/map_canvas.h"
#include "apps/picture/run_picture.h"

namespace QV::app {

/** The canvas on a page with a title above, and a legend, a scale bar and a caption below. */
cv::Mat withLegend(MapCanvas& canvas, const RunPicture& picture);

}  // namespace QV::app
