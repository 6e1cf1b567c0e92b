#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace QV::robot {

/** The bytes of a file; a file that can't be read or is longer throws std::runtime_error. */
std::string readFile(const std::filesystem::path& path, std::size_t maxBytes);

/** Replaces a file; one that can't be written throws std::runtime_error. */
void writeFile(const std::filesystem::path& path, std::string_view bytes);

}  // namespace QV::robot
