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
  /** The pose by odometry, relative to the start pose. */
  Math::Pose2D odometry;
  Math::Pose2D velocity;
};

/**
 * Listens to all inputs of a robot's services from its drivers: everything that sensors are
 * computed from. Called on any driver's thread; must not call the robot.
 */
class InputListener {
 public:
  InputListener() = default;
  virtual ~InputListener() = default;
  InputListener(const InputListener&) = delete;
  InputListener& operator=(const InputListener&) = delete;

  /** Called when a key of memory was set, or the event of that name was raised. */
  virtual void onWrite(const std::string& key, const QVValue& value, bool raised) = 0;
  /** Called when a camera gave an image, as QVImage::fromQVValue reads it. */
  virtual void onImage(int camera, const QVValue& image) = 0;
  /** Called after the body has moved and its units have measured. */
  virtual void onStep(const BodyStep& step) = 0;
};

/**
 * Sets the listener: it gets the present state, then all inputs. It must outlive that; null removes
 * it.
 */
struct QV_API InputTap {
  static void set(VirtualRobot& robot, InputListener* listener);
  /** Sets the listener for images only. */
  static void set(VideoDevice& cameras, InputListener* listener);
};

}  // namespace QV::robot
