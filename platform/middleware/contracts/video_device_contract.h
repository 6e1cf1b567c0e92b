#pragma once

/**
 * The cameras, on both ends of a call. The numbers of cameras, resolutions and color spaces stand
 * in platform/vision/qv_image.h.
 */
namespace QV::VideoDeviceContract {

inline constexpr char kModule[] = "QVVideoDevice";

/** camera -> model code. */
inline constexpr char kGetCameraModel[] = "getCameraModel";
/** camera -> the name of its frame. */
inline constexpr char kGetCameraName[] = "getCameraName";
/** camera -> rad; the next one too. */
inline constexpr char kGetHorizontalFOV[] = "getHorizontalFOV";
inline constexpr char kGetVerticalFOV[] = "getVerticalFOV";

/** client, camera, resolution, color space, frames a second -> handle. */
inline constexpr char kSubscribeCamera[] = "subscribeCamera";
/** handle. */
inline constexpr char kUnsubscribe[] = "unsubscribe";
/** handle -> [width, height, color space, microseconds, pixels], or the invalid value. */
inline constexpr char kGetImageRemote[] = "getImageRemote";
/** handle. */
inline constexpr char kReleaseImage[] = "releaseImage";
/** -> the handles that are subscribed. */
inline constexpr char kGetHandles[] = "getHandles";

}  // namespace QV::VideoDeviceContract
