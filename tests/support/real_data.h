#pragma once

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

namespace QV::test {

/** A file of the real data that QV_DATA names; nothing when it isn't there: skip the test then. */
inline std::optional<std::string> findRealData(const std::string& name) {
  const char* const folder = std::getenv("QV_DATA");
  if (folder == nullptr) return std::nullopt;
  const std::filesystem::path path = std::filesystem::path(folder) / name;
  if (!std::filesystem::exists(path)) return std::nullopt;
  return path.string();
}

}  // namespace QV::test
