#include "ros2/graph/internal/entity.h"

#include <algorithm>
#include <stdexcept>

namespace QV::ros2 {

dds_entity_t checked(dds_entity_t result, const std::string& what) {
  if (result < 0) throw std::runtime_error(what + ": " + dds_strretcode(-result));
  return result;
}

Guid guidOf(dds_entity_t entity) {
  dds_guid_t id{};
  dds_get_guid(entity, &id);
  Guid guid;
  std::copy(std::begin(id.v), std::end(id.v), guid.begin());
  return guid;
}

}  // namespace QV::ros2
