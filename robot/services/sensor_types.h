#pragma once

namespace QV::robot {

// The numbers by which a description says what a sensor is.
constexpr int kTouchType = 2;
constexpr int kDepthCameraType = 4;
constexpr int kLaserType = 8;
constexpr int kSonarType = 9;
constexpr int kBlindZoneType = 14;
constexpr int kHoleLaserType = 16;
constexpr int kShovelType = 17;

inline bool isLaserType(int type) {
  return type == kLaserType || type == kHoleLaserType || type == kShovelType;
}

/** Whether a virtual robot has such a sensor. */
inline bool isSensorType(int type) {
  return isLaserType(type) || type == kTouchType || type == kDepthCameraType ||
         type == kSonarType || type == kBlindZoneType;
}

}  // namespace QV::robot
