#pragma once

#include <cstddef>
#include <string>

#include "apps/terminal/terminal.h"
#include "apps/watch/watch_state.h"

namespace QV::app {

/**
 * A line for each sensor, below a header. Where there are fewer `columns` than it takes, those that
 * matter least go first; what is wrong goes on in lines below. 0 is room for all.
 */
std::string watchTable(const WatchState& state, std::size_t columns = 0);

/** The same as it fills a screen, with its title and the keys, drawn over what was there. */
std::string watchScreen(const WatchState& state, const ScreenSize& size);

}  // namespace QV::app
