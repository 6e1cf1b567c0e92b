#pragma once

#include <string>

#include "platform/api.h"
#include "platform/math/pose2d.h"
#include "platform/middleware/qv_value.h"

namespace QV::robot {

class VideoDevice;
class VirtualRobot;

/** The body as of one step. Metres, radians, m/s, rad/s. */
struct BodyStep {
  /** The robot's pose in the map. */
  Math::Pose2D pose;
  /** The odometry: where the wheels say that it is, seen from where it started. */
  Math::Pose2D odometry;
  Math::Pose2D velocity;
};

/**
 * Hears what drivers tell a robot's services, as it happens: all that sensors are made from. Called
 * on any thread that a driver runs on; must call nothing of the robot.
 */
class InputListener {
 public:
  InputListener() = default;
  virtual ~InputListener() = default;
  InputListener(const InputListener&) = delete;
  InputListener& operator=(const InputListener&) = delete;

  /** A key of memory has been set, or an event of that name was raised. */
  virtual void onWrite(const std::string& key, const QVValue& value, bool raised) = 0;
  /** A camera gave an image: what QVImage::fromQVValue reads. */
  virtual void onImage(int camera, const QVValue& image) = 0;
  /** The body has moved, and its units have measured. */
  virtual void onStep(const BodyStep& step) = 0;
};

/**
 * A listener hears what is so now and of all that is measured from then on; must outlive that, or
 * null takes its place.
 */
struct QV_API InputTap {
  static void set(VirtualRobot& robot, InputListener* listener);
  /** Sets the listener of images alone. */
  static void set(VideoDevice& cameras, InputListener* listener);
};

}  // namespace QV::robot
