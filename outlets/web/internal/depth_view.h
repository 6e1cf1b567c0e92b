#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <boost/shared_ptr.hpp>
#include <opencv2/core.hpp>

#include "platform/middleware/qv_broker.h"

namespace QV::outlets {

/** Takes pictures of the robot's depth camera, as a client of its own. For one thread. */
class QV_API DepthView {
 public:
  /** The modules behind the broker must outlive it; without a broker there are no pictures. */
  explicit DepthView(boost::shared_ptr<QVBroker> broker) : broker(std::move(broker)) {}
  ~DepthView();
  DepthView(const DepthView&) = delete;
  DepthView& operator=(const DepthView&) = delete;

  /** Returns an image in millimetres, 0: no depth; std::nullopt while the camera fails, which is
   * logged once. */
  std::optional<cv::Mat_<std::uint16_t>> take();
  /** No pictures are wanted for now. */
  void rest();
  bool isResting() const { return handle.empty(); }

 private:
  std::optional<cv::Mat_<std::uint16_t>> xTake();

  const boost::shared_ptr<QVBroker> broker;
  std::string handle;
  bool failed = false;
};

}  // namespace QV::outlets
