#pragma once

#include "platform/api.h"

namespace ko::os {

/** Sleeps in ko's time, the machine's or a simulated one; returns at once if not positive. */
QV_API void msleep(int milliseconds);

}  // namespace ko::os
