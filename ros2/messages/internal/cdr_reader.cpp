#include "ros2/messages/internal/cdr_reader.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace QV::ros2 {
namespace {

constexpr std::size_t kCdrHead = 4;
constexpr std::size_t kMostPadding = 3;

/** Returns the bytes of one element on the wire, without padding. */
std::size_t leastElementBytes(const Field& field) {
  if (field.kind == FieldKind::string) return sizeof(std::uint32_t);
  if (field.kind == FieldKind::message) return layoutOf(*field.type).leastBytes;
  return getScalarSize(field.kind);
}

}  // namespace

CdrReader::CdrReader(BytesView cdr, const std::string& typeName)
    : cdr(cdr), typeName(typeName), position(0) {
  xExpect(kCdrHead);
  if (cdr[0] != 0 || cdr[1] > 1)
    xFail("encoding 0 or 1 expected, " + std::to_string(cdr[0] * 256 + cdr[1]) + " given");
  swapped = cdr[1] == 0;
  position = kCdrHead;
}

void CdrReader::read(const MessageLayout& layout, std::uint8_t* message) {
  if (layout.scalarCount > 0) return xReadScalars(layout.scalarKind, message, layout.scalarCount);
  for (const Field& field : layout.fields) {
    path.push_back(&field);
    xReadField(field, message + field.offset);
    path.pop_back();
  }
}

void CdrReader::expectEnd() const {
  if (cdr.size() - position > kMostPadding)
    xFail("the end expected, " + std::to_string(cdr.size() - position) + " more bytes given");
}

void CdrReader::xReadField(const Field& field, std::uint8_t* member) {
  if (field.shape != FieldShape::sequence) return xReadElements(field, member, field.count);
  const std::size_t count = xReadCount(field);
  xReadElements(field, static_cast<std::uint8_t*>(field.sequence->resize(member, count)), count);
}

void CdrReader::xReadElements(const Field& field, std::uint8_t* elements, std::size_t count) {
  if (field.kind == FieldKind::string) {
    for (std::size_t i = 0; i < count; ++i)
      xReadString(reinterpret_cast<std::string*>(elements)[i], field.stringBound);
    return;
  }
  if (field.kind != FieldKind::message) return xReadScalars(field.kind, elements, count);
  const auto& layout = layoutOf(*field.type);
  if (layout.scalarCount > 0)
    return xReadScalars(layout.scalarKind, elements, count * layout.scalarCount);
  for (std::size_t i = 0; i < count; ++i) read(layout, elements + i * field.elementSize);
}

void CdrReader::xReadScalars(FieldKind kind, std::uint8_t* scalars, std::size_t count) {
  if (count == 0) return;
  const std::size_t size = getScalarSize(kind);
  xAlign(size);
  xExpect(count * size);
  const auto source = cdr.subspan(position, count * size);
  if (kind == FieldKind::boolean && *std::max_element(source.begin(), source.end()) > 1)
    xFail("0 or 1 expected, another byte given");
  std::memcpy(scalars, source.data(), source.size());
  position += source.size();
  if (!swapped || size == 1) return;
  for (std::size_t i = 0; i < count; ++i)
    std::reverse(scalars + i * size, scalars + (i + 1) * size);
}

void CdrReader::xReadString(std::string& text, std::size_t bound) {
  const std::uint32_t length = xReadLength();
  if (length == 0) return text.clear();  // Some writers leave out the zero at its end, too.
  xExpect(length);
  const auto* const letters = reinterpret_cast<const char*>(cdr.data()) + position;
  if (letters[length - 1] != '\0') xFail("a string that ends with 0 expected, another byte given");
  if (bound > 0 && length - 1 > bound)
    xFail("up to " + std::to_string(bound) + " letters expected, " + std::to_string(length - 1) +
          " given");
  text.assign(letters, length - 1);
  position += length;
}

std::size_t CdrReader::xReadCount(const Field& field) {
  const std::size_t count = xReadLength();
  // The size is checked before anything is allocated.
  xExpect(count * leastElementBytes(field));
  return count;
}

std::uint32_t CdrReader::xReadLength() {
  std::uint32_t length = 0;
  xReadScalars(FieldKind::uint32, reinterpret_cast<std::uint8_t*>(&length), 1);
  return length;
}

void CdrReader::xAlign(std::size_t size) {
  const std::size_t padding = (size - (position - kCdrHead) % size) % size;
  xExpect(padding);
  position += padding;
}

void CdrReader::xExpect(std::size_t bytes) const {
  const std::size_t left = cdr.size() - position;
  if (bytes > left)
    xFail(std::to_string(bytes) + " bytes expected, " + std::to_string(left) + " given");
}

void CdrReader::xFail(const std::string& what) const {
  std::string place = typeName;
  for (const Field* field : path) place += "." + field->name;
  throw std::runtime_error(place + ", byte " + std::to_string(position) + ": " + what);
}

}  // namespace QV::ros2
