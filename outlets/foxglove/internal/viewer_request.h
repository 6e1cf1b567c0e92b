#pragma once

#include <cstdint>

#include <nlohmann/json.hpp>

/** Reads what a viewer asks for; what is not as expected is a std::invalid_argument. */
namespace QV::outlets::foxglove {

/** An object that has a member of this name. */
const nlohmann::json& memberOf(const nlohmann::json& object, const char* name);
/** The array of this name. */
const nlohmann::json& arrayIn(const nlohmann::json& object, const char* name);
/** Reads a number of 32 bits. */
std::uint32_t numberIn(const nlohmann::json& value);

}  // namespace QV::outlets::foxglove
