#pragma once

#include <string>
#include <vector>

#include "platform/api.h"

namespace QV::Model::detail {

/**
 * The one of `words` that `given` is a slip of: capital letters aside, equal or a few letters off,
 * more in a longer word. Null if there is none.
 */
QV_API const std::string* findNearest(const std::string& given,
                                      const std::vector<std::string>& words);

}  // namespace QV::Model::detail
