#include "session/shared_files.h"

#include <dlfcn.h>
#include <filesystem>
#include <set>
#include <vector>

#include "session/usage_error.h"

namespace QV::session {
namespace {

namespace fs = std::filesystem;

fs::path folderOfLibrary() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<const void*>(&findSharedFile), &info) == 0 || !info.dli_fname) {
    return {};
  }
  std::error_code error;
  return fs::canonical(info.dli_fname, error).parent_path();
}

fs::path folderOfProgram() {
  std::error_code error;
  return fs::read_symlink("/proc/self/exe", error).parent_path();
}

// A library may lie in lib of its place, or in a folder of that.
std::vector<fs::path> sharedFolders() {
  constexpr int kDeepest = 3;
  std::vector<fs::path> folders;
  for (fs::path folder : {folderOfLibrary(), folderOfProgram()}) {
    for (int i = 0; i < kDeepest && folder.has_relative_path(); ++i) {
      folder = folder.parent_path();
      folders.push_back(folder / "share" / "qv");
    }
  }
  return folders;
}

bool isPath(const std::string& text) {
  std::error_code error;
  return text.find_first_of("/.") != std::string::npos || fs::is_regular_file(text, error);
}

std::string namesIn(const std::string& folder, const std::string& extension) {
  std::set<std::string> names;
  for (const fs::path& shared : sharedFolders()) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(shared / folder, error)) {
      if (entry.path().extension() == extension) names.insert(entry.path().stem());
    }
  }
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

std::string find(const std::string& nameOrPath, const std::string& folder,
                 const std::string& extension) {
  if (isPath(nameOrPath)) return nameOrPath;
  std::string file = folder;
  file += '/';
  file += nameOrPath;
  file += extension;
  try {
    return findSharedFile(file);
  } catch (const UsageError&) {
    throw UsageError("a path, or one of " + namesIn(folder, extension) + " expected, \"" +
                     nameOrPath + "\" given");
  }
}

}  // namespace

std::string findSharedFile(const std::string& name) {
  std::error_code error;
  for (const fs::path& folder : sharedFolders()) {
    if (fs::exists(folder / name, error)) return (folder / name).string();
  }
  throw UsageError(name + ": not found in share/qv next to the library or program");
}

std::string findRobot(const std::string& nameOrPath) {
  return find(nameOrPath, "descriptions", ".urdf");
}

std::string findMap(const std::string& nameOrPath) {
  return find(nameOrPath, "maps", ".yaml");
}

std::string findRecording(const std::string& nameOrPath) {
  std::error_code error;
  if (nameOrPath.find('/') != std::string::npos || fs::exists(nameOrPath, error)) return nameOrPath;
  for (const fs::path& folder : sharedFolders()) {
    const fs::path file = folder / "recordings" / nameOrPath;
    if (fs::is_regular_file(file, error)) return file.string();
  }
  return nameOrPath;
}

}  // namespace QV::session
