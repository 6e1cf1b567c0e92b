#pragma once

#include <cstddef>
#include <string>

#include "session/snapshot.h"

namespace QV::app {

/** The state that a watch shows. */
struct WatchState {
  /** The sensors, by name. */
  session::Snapshot seen;
  /** Index of the sensor that keys mean. */
  std::size_t chosen = 0;
  /** The result of the last key. */
  std::string note;
};

}  // namespace QV::app
