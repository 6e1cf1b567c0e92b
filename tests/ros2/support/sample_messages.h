#pragma once

#include <cstdint>
#include <string>

#include "ros2/messages/sensor_msgs.h"

namespace QV::test {

/** Makes what a sonar tells that hears from `least` to 4 m. */
inline ros2::sensor_msgs::Range sampleRange(float least, float value,
                                            const std::string& frame = "sonar") {
  ros2::sensor_msgs::Range range;
  range.header.frame_id = frame;
  range.field_of_view = 0.5f;
  range.min_range = least;
  range.max_range = 4.0f;
  range.range = value;
  return range;
}

/** A depth image of 4 by 3 pixels, all bytes of which are `value`. */
inline ros2::sensor_msgs::Image sampleImage(const std::string& encoding, std::uint32_t pixelSize,
                                            std::uint8_t value) {
  ros2::sensor_msgs::Image image;
  image.header.frame_id = "camera";
  image.width = 4;
  image.height = 3;
  image.encoding = encoding;
  image.step = image.width * pixelSize;
  image.data.assign(std::size_t{image.height} * image.step, value);
  return image;
}

}  // namespace QV::test
