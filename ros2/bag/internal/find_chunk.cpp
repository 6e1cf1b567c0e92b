#include "ros2/bag/internal/find_chunk.h"

#include <algorithm>
#include <cstring>

#include "ros2/bag/internal/mcap_records.h"

namespace QV::ros2 {
namespace {

/** The bytes of the head before the compression's name: two times, the size and the CRC. */
constexpr std::uint64_t kBeforeName = 28;
constexpr std::size_t kLongestName = 4;
constexpr std::uint64_t kPiece = std::uint64_t{1} << 16;

template <typename Number>
Number numberAt(const std::uint8_t* bytes) {
  Number number;
  std::memcpy(&number, bytes, sizeof number);
  return number;
}

}  // namespace

bool isWholeChunk(const ByteSource& source, std::uint64_t place) {
  constexpr std::uint64_t kLeast = kBeforeName + sizeof(std::uint32_t) + sizeof(std::uint64_t);
  const std::uint64_t left = source.getSize() - place;
  if (left < mcap::kHeadSize + kLeast) return false;
  std::uint8_t bytes[mcap::kHeadSize + kLeast + kLongestName] = {};
  source.read(place,
              {bytes, static_cast<std::size_t>(std::min<std::uint64_t>(left, sizeof bytes))});
  const mcap::Head head = mcap::parseHead(bytes);
  if (head.op != mcap::Op::chunk || head.length < kLeast || head.length > left - mcap::kHeadSize)
    return false;
  const std::uint8_t* const name = bytes + mcap::kHeadSize + kBeforeName;
  const auto letters = numberAt<std::uint32_t>(name);
  if (letters > kLongestName || head.length < kLeast + letters) return false;
  const auto packed = numberAt<std::uint64_t>(name + sizeof letters + letters);
  return packed == head.length - kLeast - letters;
}

std::optional<std::uint64_t> findChunk(const ByteSource& source, std::uint64_t from) {
  Bytes bytes;
  for (std::uint64_t start = from; start < source.getSize(); start += bytes.size()) {
    bytes.resize(static_cast<std::size_t>(std::min(kPiece, source.getSize() - start)));
    source.read(start, bytes);
    for (auto at = bytes.begin(); at != bytes.end(); ++at) {
      at = std::find(at, bytes.end(), static_cast<std::uint8_t>(mcap::Op::chunk));
      if (at == bytes.end()) break;
      const std::uint64_t place = start + static_cast<std::uint64_t>(at - bytes.begin());
      if (isWholeChunk(source, place)) return place;
    }
  }
  return std::nullopt;
}

}  // namespace QV::ros2
