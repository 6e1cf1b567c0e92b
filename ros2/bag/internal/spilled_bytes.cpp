#include "ros2/bag/internal/spilled_bytes.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

namespace QV::ros2 {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostInMemory = std::size_t{1} << 20;

[[noreturn]] void fail(const std::string& neighbour) {
  throw std::runtime_error(neighbour +
                           ": a file for its index: " + std::generic_category().message(errno));
}

/** Negative if none can be made there. */
int openNameless(const fs::path& folder) {
  std::string name = (folder / ".qv_index_XXXXXX").string();
  const int descriptor = ::mkostemp(name.data(), O_CLOEXEC);
  if (descriptor >= 0) ::unlink(name.c_str());
  return descriptor;
}

}  // namespace

SpilledBytes::~SpilledBytes() {
  if (descriptor >= 0) ::close(descriptor);
}

void SpilledBytes::append(BytesView bytes) {
  recent.insert(recent.end(), bytes.begin(), bytes.end());
  if (recent.size() >= kMostInMemory) xSpill();
}

// A pipe or a device has no folder for files.
void SpilledBytes::xOpen() {
  const fs::path folder = fs::absolute(neighbour).parent_path();
  std::error_code ignored;
  if (fs::is_regular_file(neighbour, ignored)) descriptor = openNameless(folder);
  if (descriptor < 0) descriptor = openNameless(fs::temp_directory_path());
  if (descriptor < 0) fail(neighbour);
}

void SpilledBytes::xSpill() {
  if (descriptor < 0) xOpen();
  for (BytesView left(recent); !left.empty();) {
    const ssize_t count = ::write(descriptor, left.data(), left.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail(neighbour);
    left = left.subspan(static_cast<std::size_t>(count));
  }
  spilled += recent.size();
  recent.clear();
}

void SpilledBytes::xRead(std::uint64_t place, Bytes& piece) const {
  piece.resize(static_cast<std::size_t>(std::min<std::uint64_t>(kMostInMemory, spilled - place)));
  const ssize_t count = ::pread(descriptor, piece.data(), piece.size(), static_cast<off_t>(place));
  if (count <= 0) fail(neighbour);
  piece.resize(static_cast<std::size_t>(count));
}

}  // namespace QV::ros2
