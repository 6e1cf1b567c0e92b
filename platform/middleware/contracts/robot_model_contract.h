#pragma once

/** The robot's description, on both ends of a call. */
namespace QV::RobotModelContract {

inline constexpr char kModule[] = "QVRobotModel";

/** -> the description, XML. */
inline constexpr char kGetConfig[] = "getConfig";

}  // namespace QV::RobotModelContract
