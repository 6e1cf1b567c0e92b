#pragma once

#include <opencv2/core.hpp>

#include "outlets/picture/internal/map_canvas.h"
#include "session/snapshot.h"

namespace QV::outlets {

/** The canvas on a page with a title above, and a legend, a scale bar and a caption below. */
cv::Mat withLegend(MapCanvas& canvas, const session::Snapshot& snapshot, bool hasWay);

}  // namespace QV::outlets
