#include "outlets/foxglove/internal/viewer_request.h"

#include <stdexcept>
#include <string>

namespace QV::outlets::foxglove {

using nlohmann::json;

const json& memberOf(const json& object, const char* name) {
  if (object.is_object() && object.contains(name)) return object.at(name);
  throw std::invalid_argument(std::string(name) + ": missing");
}

const json& arrayIn(const json& object, const char* name) {
  const auto found = object.find(name);
  if (found != object.end() && found->is_array()) return *found;
  throw std::invalid_argument(std::string(name) + ": an array expected");
}

std::uint32_t numberIn(const json& value) {
  if (!value.is_number_unsigned() || value.get<std::uint64_t>() > UINT32_MAX) {
    throw std::invalid_argument("a number of 32 bits expected, " + value.dump() + " given");
  }
  return value.get<std::uint32_t>();
}

}  // namespace QV::outlets::foxglove
