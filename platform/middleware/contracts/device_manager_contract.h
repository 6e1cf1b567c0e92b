#pragma once

/** The device manager, on both ends of a call. */
namespace QV::DeviceManagerContract {

inline constexpr char kModule[] = "DCM";

/** offset (ms) -> its clock plus the offset, ms modulo 2^32 as a signed int. */
inline constexpr char kGetTime[] = "getTime";
/** [actuator, mode, [[value, time (ms)], ...]]. */
inline constexpr char kSet[] = "set";

/** Modes: which pending commands of the actuator go. None. */
inline constexpr char kMerge[] = "Merge";
inline constexpr char kClearAll[] = "ClearAll";
/** Drops the commands from the first new one on. */
inline constexpr char kClearAfter[] = "ClearAfter";
/** Up to the last new one. */
inline constexpr char kClearBefore[] = "ClearBefore";

}  // namespace QV::DeviceManagerContract
