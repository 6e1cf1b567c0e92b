#pragma once

#include <cstddef>
#include <string>

#include "session/snapshot.h"

namespace QV::app {

/** What a watch shows. */
struct WatchState {
  /** Its sensors by name. */
  session::Snapshot seen;
  /** Index of the sensor that keys mean. */
  std::size_t chosen = 0;
  /** What came of the last key. */
  std::string note;
};

}  // namespace QV::app
