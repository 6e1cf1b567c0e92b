#pragma once

#include <cstdint>

#include <nlohmann/json.hpp>

/** Reads a viewer's request. Throws std::invalid_argument for a malformed one. */
namespace QV::outlets::foxglove {

/** An object that has a member of this name. */
const nlohmann::json& memberOf(const nlohmann::json& object, const char* name);
/** The array of this name. */
const nlohmann::json& arrayIn(const nlohmann::json& object, const char* name);
/** Reads a number of 32 bits. */
std::uint32_t numberIn(const nlohmann::json& value);

}  // namespace QV::outlets::foxglove
