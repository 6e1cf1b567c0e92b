#pragma once

/** The motion service, on both ends of a call; transforms are 12 floats by rows, metres. */
namespace QV::MotionContract {

inline constexpr char kModule[] = "QVMotion";

/** name, frame, whether from measured joints -> transform. */
inline constexpr char kGetTransform[] = "getTransform";
/** name, time (ns of ko::Clock) -> transform in the ground frame. */
inline constexpr char kGetSensorTransformAtTime[] = "_getSensorTransformAtTime";
/** -> forward and leftward (m/s), turning (rad/s). */
inline constexpr char kGetRobotVelocity[] = "getRobotVelocity";

/** The frame of the robot's body, a link that the description names. */
inline constexpr int kBodyFrame = 0;
/** The robot's own ground frame: it moves with the robot. */
inline constexpr int kGroundFrame = 1;

}  // namespace QV::MotionContract
