#pragma once

/** The virtual robot's own module, on both ends of a call. */
namespace QV::VirtualRobotContract {

inline constexpr char kModule[] = "VirtualRobot";

/** forward and leftward (m/s), turning (rad/s). */
inline constexpr char kSetVelocity[] = "setVelocity";
/** -> x, y (m) and theta (rad) in the map. */
inline constexpr char kGetPose[] = "getPose";

}  // namespace QV::VirtualRobotContract
