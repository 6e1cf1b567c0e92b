#pragma once

#include "platform/api.h"

/** The numbers by which the video device names cameras, colour spaces and resolutions. */
namespace QV {

/** Index of the depth camera. */
constexpr int kDepthCamera = 2;

/** Red, green and blue, a byte each. */
constexpr int kRGBColorSpace = 11;
/** Depth in millimetres as 16-bit unsigned; 0 where nothing was measured. */
constexpr int kDepthColorSpace = 17;
/** The last depth, in millimetres, that is taken for a measurement. */
constexpr int kMaxDepth = 15000;
/** Three 32-bit floats: x, y, z. */
constexpr int kXYZColorSpace = 19;
/** 24 bits packed into one channel. */
constexpr int kPacked24ColorSpace = 24;

constexpr int k320x240Resolution = 8;
constexpr int k640x480Resolution = 12;

/** Bytes per pixel; -1 for a colour space that is not listed above. */
QV_API int getNumLayersInColorSpace(int colorSpace);

/** Channels per pixel; -1 for a colour space that is not listed above. */
QV_API int getNumChannelsInColorSpace(int colorSpace);

/** The size in pixels behind a resolution code; an unknown one throws std::invalid_argument. */
QV_API void setSizeFromResolution(int resolution, int& width, int& height);

}  // namespace QV
