#include "session/shared_files.h"

#include <filesystem>

#include "session/usage_error.h"

namespace QV::session {

std::string findSharedFile(const std::string& name) {
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  const auto installed = program.parent_path().parent_path() / "share" / "qv" / name;
  for (const auto& candidate : {installed, std::filesystem::path(QV_SOURCE_DIR) / name,
                                std::filesystem::path(QV_SOURCE_DIR) / "robot" / name}) {
    if (std::filesystem::exists(candidate, error)) return candidate.string();
  }
  throw UsageError(name + ": not found in " + installed.parent_path().string() +
                   "; name a file of your own");
}

}  // namespace QV::session
