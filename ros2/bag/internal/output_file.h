#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>

#include "ros2/messages/message_type.h"

namespace QV::ros2 {

/** A file that grows by whole records, with the CRC of all that it holds. Not copyable. */
class OutputFile {
 public:
  /** Opens the file; "-" is standard output. Throws std::runtime_error with its name if it can't be
   * created. */
  explicit OutputFile(const std::string& path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  struct Piece {
    BytesView bytes;
    /** The CRC of the bytes, if it is known. */
    std::optional<std::uint32_t> crc = std::nullopt;
  };

  /** Throws std::runtime_error if not all can be written; nothing of it is in the file then. */
  void write(std::initializer_list<Piece> pieces);
  void write(BytesView bytes) { write({Piece{bytes}}); }

  std::uint64_t getSize() const { return size; }
  std::uint32_t getCrc() const { return crc; }

 private:
  void xWrite(BytesView bytes) const;

  const std::string path;
  const int descriptor;
  std::uint64_t size = 0;
  std::uint32_t crc = 0;
};

}  // namespace QV::ros2
