#include "robot/internal/file_bytes.h"

#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include "platform/ko/internal/write_error.h"

namespace QV::robot {
namespace {

[[noreturn]] void fail(const std::filesystem::path& path, const std::string& message) {
  throw std::runtime_error(path.string() + ": " + message);
}

}  // namespace

std::string readFile(const std::filesystem::path& path, std::size_t maxBytes) {
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  if (error) fail(path, "a readable file expected: " + error.message());
  if (size > maxBytes)
    fail(path, "a file of at most " + std::to_string(maxBytes) + " bytes expected");
  std::string bytes(size, '\0');
  std::ifstream file(path, std::ios::binary);
  if (!file.read(bytes.data(), static_cast<std::streamsize>(size))) {
    fail(path, "a readable file expected");
  }
  return bytes;
}

void writeFile(const std::filesystem::path& path, std::string_view bytes) {
  errno = 0;
  std::ofstream file(path, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) throw std::runtime_error(ko::detail::cannotWrite(path.string()));
}

}  // namespace QV::robot
