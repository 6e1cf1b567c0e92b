#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace QV::Model::detail {

/**
 * The memory keys that a pattern stands for. `{i}` counts from 0 to `count` - 1, `{i:02}` with at
 * least 2 digits; `{X,Y}` is X and then Y. All keys of a number come before those of the next one,
 * and of several alternatives the last ones change fastest.
 * Throws std::invalid_argument for a malformed pattern, a count without `{i}` or the other way
 * round, and more than `most` keys.
 */
std::vector<std::string> expandKeyPattern(std::string_view pattern, std::optional<int> count,
                                          std::size_t most);

}  // namespace QV::Model::detail
