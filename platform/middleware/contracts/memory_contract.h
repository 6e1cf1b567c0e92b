#pragma once

/** The shared memory, on both ends of a call; QVMemoryProxy says what its methods do. */
namespace QV::MemoryContract {

inline constexpr char kModule[] = "QVMemory";

/** key -> value. */
inline constexpr char kGetData[] = "getData";
/** key -> address of its 32-bit float or int, as an int. */
inline constexpr char kGetDataPtr[] = "getDataPtr";
/** key, value. */
inline constexpr char kInsertData[] = "insertData";

/** event. */
inline constexpr char kDeclareEvent[] = "declareEvent";
/** event, value. */
inline constexpr char kRaiseEvent[] = "raiseEvent";
/** event, module, method. */
inline constexpr char kSubscribeToEvent[] = "subscribeToEvent";
/** event, module. */
inline constexpr char kUnsubscribeToEvent[] = "unsubscribeToEvent";
/** event, module, message, method. */
inline constexpr char kSubscribeToMicroEvent[] = "subscribeToMicroEvent";
/** event, module. */
inline constexpr char kUnsubscribeToMicroEvent[] = "unsubscribeToMicroEvent";

}  // namespace QV::MemoryContract
