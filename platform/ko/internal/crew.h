#pragma once

#include <functional>

#include "platform/api.h"

namespace ko::detail {

/**
 * Runs `work` on this thread and, at the same time, on up to `helpers` others that wait for such
 * calls; returns when all of them are through. `work` itself deals out what there is to do, and may
 * throw on this thread alone; who comes when nothing is left of it finds nothing to do. There are
 * never more helpers in the process than processors beside the caller's, but for one at least: who
 * finds all of them busy works alone. Thread-safe, also after a fork.
 */
QV_API void shareWork(const std::function<void()>& work, int helpers);

}  // namespace ko::detail
