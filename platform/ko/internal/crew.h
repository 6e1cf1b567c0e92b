#pragma once

#include <functional>

#include "platform/api.h"

namespace ko::detail {

/**
 * Runs `work` on this thread and at the same time on up to `helpers` others; returns when all of
 * them have finished. `work` itself shares out the items. It may throw on this thread only, and
 * must return at once if no item is left. The process has at most as many helpers as processors,
 * less the caller's, but at least one. If all helpers are busy, the caller works alone.
 * Thread-safe, also after a fork.
 */
QV_API void shareWork(const std::function<void()>& work, int helpers);

}  // namespace ko::detail
