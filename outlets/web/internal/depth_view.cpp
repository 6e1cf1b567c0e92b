#include "outlets/web/internal/depth_view.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "platform/ko/log.h"
#include "platform/middleware/qv_video_device_proxy.h"
#include "platform/vision/qv_image.h"

namespace QV::outlets {
namespace {

constexpr int kFrameRate = 10;

}  // namespace

DepthView::~DepthView() {
  rest();
}

std::optional<cv::Mat_<std::uint16_t>> DepthView::take() {
  try {
    auto depth = xTake();
    failed = false;
    return depth;
  } catch (const std::exception& exception) {
    if (!std::exchange(failed, true)) ko::log::warning("LiveView", "take") << exception.what();
    return std::nullopt;
  }
}

std::optional<cv::Mat_<std::uint16_t>> DepthView::xTake() {
  if (!broker) return std::nullopt;
  const QVVideoDeviceProxy camera(broker);
  if (handle.empty()) {
    handle = camera.subscribeCamera("LiveView", kDepthCamera, k320x240Resolution, kDepthColorSpace,
                                    kFrameRate);
  }
  const auto image = QVImage::fromQVValue(camera.getImageRemote(handle));
  camera.releaseImage(handle);
  if (!image || image->getColorSpace() != kDepthColorSpace) return std::nullopt;
  cv::Mat_<std::uint16_t> depth(image->getHeight(), image->getWidth());
  std::copy_n(image->getPixels(), image->getSize(), depth.data);
  return depth;
}

void DepthView::rest() {
  if (handle.empty()) return;
  try {
    QVVideoDeviceProxy(broker).unsubscribe(std::exchange(handle, {}));
  } catch (const std::exception& exception) {
    ko::log::warning("LiveView", "rest") << exception.what();
  }
}

}  // namespace QV::outlets
