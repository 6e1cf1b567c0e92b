#pragma once

#include <string>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/middleware/qv_value.h"

namespace QV::ValueUtils {

/**
 * The time that lies this many seconds and microseconds after the clock's start. A value that is no
 * int, or a time beyond the clock's range, throws QVError with `name`, which says whose time it is.
 */
QV_API ko::Clock::time_point extractDuration(const QVValue& seconds, const QVValue& microseconds,
                                             const std::string& name);

}  // namespace QV::ValueUtils
