#pragma once

#include <string>

namespace QV::outlets::foxglove {

/** The JSON schema of a message by its name, such as "foxglove.Log". */
std::string schemaText(const std::string& name);

}  // namespace QV::outlets::foxglove
