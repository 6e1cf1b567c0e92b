#pragma once

#include <cstddef>
#include <string>

#include "apps/terminal/terminal.h"
#include "apps/watch/watch_state.h"

namespace QV::app {

/**
 * Returns a line for each sensor, below a header. If `columns` is too small, the least important
 * columns go first, and the reason continues in lines below. 0: no limit.
 */
std::string watchTable(const WatchState& state, std::size_t columns = 0);

/** Returns the same for a whole screen, with title and keys, drawn over the last screen. */
std::string watchScreen(const WatchState& state, const ScreenSize& size);

}  // namespace QV::app
