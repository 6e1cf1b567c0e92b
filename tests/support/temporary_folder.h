#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace QV::test {

inline std::string readBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/** A folder of its own for one test, removed with everything in it. */
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "qv_test_XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path = name;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string operator/(const std::string& name) const { return (path / name).string(); }

  std::string string() const { return path.string(); }

  /** Writes a file and gives its path. */
  std::string write(const std::string& name, const std::string& bytes) const {
    std::ofstream(path / name, std::ios::binary) << bytes;
    return *this / name;
  }

 private:
  std::filesystem::path path;
};

}  // namespace QV::test
