#pragma once

#include "ros2/messages/internal/layout.h"

namespace QV::ros2 {

/** Appends a message to `cdr` in CDR, little endian; a string or sequence of 4 GiB throws. */
class CdrWriter {
 public:
  explicit CdrWriter(Bytes& cdr);

  void write(const MessageLayout& layout, const std::uint8_t* message);

 private:
  void xWriteElements(const Field& field, const std::uint8_t* elements, std::size_t count);
  void xWriteScalars(FieldKind kind, const std::uint8_t* scalars, std::size_t count);
  void xWriteString(const std::string& text, const Field& field);
  void xWriteLength(std::size_t length, const Field& field);
  void xAlign(std::size_t size);

  Bytes& cdr;
};

}  // namespace QV::ros2
