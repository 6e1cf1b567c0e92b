#include "ros2/bag/internal/byte_source.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "ros2/bag/internal/crc32.h"

namespace QV::ros2 {
namespace {

constexpr std::uint64_t kWindow = std::uint64_t{1} << 20;

class FileSource : public ByteSource {
 public:
  explicit FileSource(const std::string& path)
      : descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    struct stat status {};
    if (descriptor < 0 || ::fstat(descriptor, &status) != 0) xFail();
    size = static_cast<std::uint64_t>(std::max<off_t>(status.st_size, 0));
  }
  ~FileSource() override { ::close(descriptor); }

 private:
  void xRead(std::uint64_t offset, std::span<std::uint8_t> bytes) const override {
    while (!bytes.empty()) {
      const ssize_t count =
          ::pread(descriptor, bytes.data(), bytes.size(), static_cast<off_t>(offset));
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) xFail();
      if (count == 0) throw std::runtime_error("the file has become shorter");
      offset += static_cast<std::uint64_t>(count);
      bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
  }

  [[noreturn]] static void xFail() {
    throw std::runtime_error(std::generic_category().message(errno));
  }

  const int descriptor;
};

class MemorySource : public ByteSource {
 public:
  explicit MemorySource(BytesView content) : content(content) { size = content.size(); }

 private:
  void xRead(std::uint64_t offset, std::span<std::uint8_t> bytes) const override {
    std::copy_n(content.begin() + static_cast<std::ptrdiff_t>(offset), bytes.size(), bytes.begin());
  }

  const BytesView content;
};

}  // namespace

void ByteSource::read(std::uint64_t offset, std::span<std::uint8_t> bytes) const {
  if (offset > size || bytes.size() > size - offset)
    throw std::runtime_error(std::to_string(bytes.size()) +
                             " bytes expected, the file ends before");
  xRead(offset, bytes);
}

BytesView ByteWindow::at(std::uint64_t place, std::uint64_t size) {
  if (place < start || place + size > start + bytes.size()) {
    start = place;
    const std::uint64_t left = source.getSize() - std::min(place, source.getSize());
    bytes.resize(static_cast<std::size_t>(std::max(size, std::min(kWindow, left))));
    source.read(place, bytes);
  }
  return BytesView(bytes).subspan(static_cast<std::size_t>(place - start),
                                  static_cast<std::size_t>(size));
}

std::uint32_t crc32Between(const ByteSource& source, std::uint64_t begin, std::uint64_t end) {
  ByteWindow window(source);
  std::uint32_t crc = 0;
  for (std::uint64_t place = begin; place < end; place += std::min(kWindow, end - place))
    crc = crc32(window.at(place, std::min(kWindow, end - place)), crc);
  return crc;
}

std::unique_ptr<ByteSource> openFile(const std::string& path) {
  try {
    return std::make_unique<FileSource>(path);
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(path + ": " + error.what());
  }
}

std::unique_ptr<ByteSource> openMemory(BytesView bytes) {
  return std::make_unique<MemorySource>(bytes);
}

}  // namespace QV::ros2
