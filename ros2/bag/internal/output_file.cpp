#include "ros2/bag/internal/output_file.h"

#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

#include "platform/ko/internal/write_error.h"
#include "ros2/bag/internal/crc32.h"

namespace QV::ros2 {
namespace {

int openForWriting(const std::string& path) {
  if (path == "-") return ::dup(STDOUT_FILENO);
  return ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : path(path), descriptor(openForWriting(path)) {
  if (descriptor < 0) throw std::runtime_error(ko::detail::cannotWrite(path));
}

OutputFile::~OutputFile() {
  ::close(descriptor);
}

void OutputFile::write(std::initializer_list<Piece> pieces) {
  for (const Piece& piece : pieces) xWrite(piece.bytes);
  for (const auto& [bytes, known] : pieces) {
    size += bytes.size();
    crc = known ? crc32Of(crc, *known, bytes.size()) : crc32(bytes, crc);
  }
}

void OutputFile::xWrite(BytesView bytes) const {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      const std::string reason = std::generic_category().message(errno);
      // A pipe can't be shortened, and then ends in the middle of a record.
      [[maybe_unused]] const int ignored = ::ftruncate(descriptor, static_cast<off_t>(size));
      throw std::runtime_error(path + ": " + reason + " after " + std::to_string(size) + " bytes");
    }
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
}

}  // namespace QV::ros2
