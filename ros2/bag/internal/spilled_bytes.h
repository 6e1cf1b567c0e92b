#pragma once

#include <cstdint>
#include <string>

#include "ros2/messages/message_type.h"

namespace QV::ros2 {

/**
 * Bytes that wait for their turn: the last of them in memory, the others in a file without a name,
 * which is gone with the process. Not copyable.
 */
class QV_API SpilledBytes {
 public:
  /** The file, if it comes to one, lies on the disk of `neighbour`. */
  explicit SpilledBytes(const std::string& neighbour) : neighbour(neighbour) {}
  ~SpilledBytes();
  SpilledBytes(const SpilledBytes&) = delete;
  SpilledBytes& operator=(const SpilledBytes&) = delete;

  /** Appends bytes. Throws std::runtime_error if they can't be written. */
  void append(BytesView bytes);
  std::uint64_t getSize() const { return spilled + recent.size(); }

  /** Calls `take` with all bytes, piece by piece. Throws std::runtime_error if they can't be read.
   */
  template <typename Take>
  void read(const Take& take) const {
    Bytes piece;
    for (std::uint64_t place = 0; place < spilled; place += piece.size()) {
      xRead(place, piece);
      take(BytesView(piece));
    }
    take(BytesView(recent));
  }

 private:
  void xOpen();
  void xSpill();
  /** The next piece from `place` on. */
  void xRead(std::uint64_t place, Bytes& piece) const;

  const std::string neighbour;
  Bytes recent;
  std::uint64_t spilled = 0;
  int descriptor = -1;
};

}  // namespace QV::ros2
