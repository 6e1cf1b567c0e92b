#pragma once

/** The device manager, on both ends of a call. */
namespace QV::DeviceManagerContract {

inline constexpr char kModule[] = "DCM";

/** offset (ms) -> its clock plus the offset, ms modulo 2^32 as a signed int. */
inline constexpr char kGetTime[] = "getTime";
/** [actuator, mode, [[value, time (ms)], ...]]. */
inline constexpr char kSet[] = "set";

/** Keeps the actuator's pending commands; the other modes drop some. */
inline constexpr char kMerge[] = "Merge";
/** Drops them all. */
inline constexpr char kClearAll[] = "ClearAll";
/** Drops those from the first new one on. */
inline constexpr char kClearAfter[] = "ClearAfter";
/** Drops those up to the last new one. */
inline constexpr char kClearBefore[] = "ClearBefore";

/** The time in this clock that a laser publishes is so much later than that of its scan, ms. */
inline constexpr int kScanDelay = 50;

}  // namespace QV::DeviceManagerContract
