#pragma once

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/vision/qv_image.h"
#include "ros2/recording/internal/image_points.h"
#include "ros2/recording/internal/message_sink.h"
#include "session/session.h"
#include "session/snapshot.h"

namespace QV::ros2 {

/**
 * Writes the points of depth cameras as pixels of the images that they were made of, which are in
 * the recording anyway: a whole image's points are twelve times as long as its pixels' runs and
 * pixels together. Points that no recorded image gives bit for bit are written elsewhere.
 */
class QV_API CameraPoints {
 public:
  /** Looks for the cameras; of a robot without any there is nothing to write. */
  CameraPoints(MessageSink& sink, const session::Session& session);

  /** An image that is recorded at `time`, as QVImage::fromQVValue reads it. */
  void note(int camera, const QVValue& image, ko::Clock::time_point time);

  /** Writes the points; true if all of the sensor's records are pixels of an image, and written
   * as such. */
  bool write(const session::SensorState& sensor, ko::Clock::time_point time);
  /** Some of the points that were written last, as many as a viewer needs. */
  const std::vector<Math::Position3D>& getThinned() const { return thinned; }

 private:
  struct Picture {
    QVImage image;
    ko::Clock::time_point time;
  };
  struct Camera {
    std::string name;
    std::uint16_t topic = 0;
    ImageExtents extents;
    /** The last ones, the newest first. */
    std::deque<Picture> pictures;
  };

  MessageSink& sink;
  std::vector<Camera> cameras;
  std::vector<Math::Position3D> thinned;
};

}  // namespace QV::ros2
