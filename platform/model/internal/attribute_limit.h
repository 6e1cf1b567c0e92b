#pragma once

#include <string_view>

namespace QV::Model::detail {

/**
 * Throws std::runtime_error, with the line, for an element of more than a hundred attributes: the
 * parser compares each with all before it, and would take hours for an element of some megabytes.
 */
void checkAttributeCounts(std::string_view xml);

}  // namespace QV::Model::detail
