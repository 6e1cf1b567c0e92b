#pragma once

namespace QV::app {

/** The name under which the program itself subscribes. */
inline constexpr char kSubscriber[] = "qvsensors";

}  // namespace QV::app
