#include "platform/vision/internal/connected_component_labeling.h"

#include <stdexcept>
#include <string>

#include "platform/vision/internal/component_labeler.h"

namespace QV::vision {

void connectedComponentLabeling(const cv::Mat& image, cv::Mat_<int>& labels, int maxDifference,
                                int reserved1, int reserved2) {
  if (reserved1 != 0 || reserved2 != 0) {
    throw std::invalid_argument("connectedComponentLabeling: the reserved numbers must be 0, " +
                                (std::to_string(reserved1) + " and " + std::to_string(reserved2)) +
                                " given");
  }
  ComponentLabeler().label(image, labels, maxDifference);
}

}  // namespace QV::vision
