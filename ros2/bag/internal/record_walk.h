#pragma once

#include <stdexcept>
#include <string>

#include "ros2/bag/internal/mcap_records.h"

namespace QV::ros2 {

/** Calls `visit(op, content)` for each record. Throws std::runtime_error if one runs past the end.
 */
template <typename Visit>
void walkRecords(BytesView bytes, const Visit& visit) {
  while (!bytes.empty()) {
    const auto [op, length] = mcap::parseHead(bytes);
    bytes = bytes.subspan(mcap::kHeadSize);
    if (length > bytes.size())
      throw std::runtime_error("a record of up to " + std::to_string(bytes.size()) +
                               " bytes expected, " + std::to_string(length) + " given");
    visit(op, bytes.first(static_cast<std::size_t>(length)));
    bytes = bytes.subspan(static_cast<std::size_t>(length));
  }
}

}  // namespace QV::ros2
