#pragma once

#include <string>

#include "apps/terminal/terminal.h"
#include "apps/watch/watch_state.h"

namespace QV::app {

/** A line for each sensor, below a header. */
std::string watchTable(const WatchState& state);

/** The same as it fills a screen, with its title and the keys, drawn over what was there. */
std::string watchScreen(const WatchState& state, const ScreenSize& size);

}  // namespace QV::app
