#pragma once

#include <string>

namespace QV::robot {

/**
 * The PNG without the chunks that no pixel depends on, so that a decoder has nothing to complain of
 * in them. One that is cut short or damaged throws std::runtime_error.
 */
std::string keepCriticalChunks(const std::string& png);

}  // namespace QV::robot
