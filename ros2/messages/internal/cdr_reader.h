#pragma once

#include "ros2/messages/internal/layout.h"

namespace QV::ros2 {

/** Reads a message from CDR. All errors are std::runtime_error that names type, field and byte. */
class CdrReader {
 public:
  /** Both must outlive it. */
  CdrReader(BytesView cdr, const std::string& typeName);

  void read(const MessageLayout& layout, std::uint8_t* message);
  /** Refuses more than padding behind the message. */
  void expectEnd() const;

 private:
  void xReadField(const Field& field, std::uint8_t* member);
  void xReadElements(const Field& field, std::uint8_t* elements, std::size_t count);
  void xReadScalars(FieldKind kind, std::uint8_t* scalars, std::size_t count);
  void xReadString(std::string& text, std::size_t bound);
  std::size_t xReadCount(const Field& field);
  std::uint32_t xReadLength();
  void xAlign(std::size_t size);
  void xExpect(std::size_t bytes) const;
  [[noreturn]] void xFail(const std::string& what) const;

  BytesView cdr;
  const std::string& typeName;
  bool swapped = false;
  std::size_t position;
  std::vector<const Field*> path;
};

}  // namespace QV::ros2
