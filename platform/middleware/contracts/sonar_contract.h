#pragma once

/** The sonar driver, on both ends of a call. */
namespace QV::SonarContract {

inline constexpr char kModule[] = "QVSonar";

/** The sonar's name; the next one too. It runs while it has more subscriptions than ends. */
inline constexpr char kSubscribe[] = "subscribe";
inline constexpr char kUnsubscribe[] = "unsubscribe";

}  // namespace QV::SonarContract
