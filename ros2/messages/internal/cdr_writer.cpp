#include "ros2/messages/internal/cdr_writer.h"

#include <bit>
#include <limits>
#include <stdexcept>

namespace QV::ros2 {

static_assert(std::endian::native == std::endian::little, "scalars are copied as they are");

namespace {
constexpr std::uint8_t kHead[] = {0, 1, 0, 0};
}

CdrWriter::CdrWriter(Bytes& cdr) : cdr(cdr) {
  cdr.assign(std::begin(kHead), std::end(kHead));
}

void CdrWriter::write(const MessageLayout& layout, const std::uint8_t* message) {
  if (layout.scalarCount > 0) return xWriteScalars(layout.scalarKind, message, layout.scalarCount);
  for (const Field& field : layout.fields) {
    const std::uint8_t* const member = message + field.offset;
    if (field.shape != FieldShape::sequence) {
      xWriteElements(field, member, field.count);
      continue;
    }
    const std::size_t count = field.sequence->getSize(member);
    xWriteLength(count, field);
    xWriteElements(field, static_cast<const std::uint8_t*>(field.sequence->getData(member)), count);
  }
}

void CdrWriter::xWriteElements(const Field& field, const std::uint8_t* elements,
                               std::size_t count) {
  if (field.kind == FieldKind::string) {
    for (std::size_t i = 0; i < count; ++i)
      xWriteString(reinterpret_cast<const std::string*>(elements)[i], field);
    return;
  }
  if (field.kind != FieldKind::message) return xWriteScalars(field.kind, elements, count);
  const auto& layout = layoutOf(*field.type);
  if (layout.scalarCount > 0)
    return xWriteScalars(layout.scalarKind, elements, count * layout.scalarCount);
  for (std::size_t i = 0; i < count; ++i) write(layout, elements + i * field.elementSize);
}

void CdrWriter::xWriteScalars(FieldKind kind, const std::uint8_t* scalars, std::size_t count) {
  if (count == 0) return;
  const std::size_t size = getScalarSize(kind);
  xAlign(size);
  cdr.insert(cdr.end(), scalars, scalars + count * size);
}

void CdrWriter::xWriteString(const std::string& text, const Field& field) {
  if (field.stringBound > 0 && text.size() > field.stringBound)
    throw std::invalid_argument(field.name + ": up to " + std::to_string(field.stringBound) +
                                " letters expected, " + std::to_string(text.size()) + " given");
  xWriteLength(text.size() + 1, field);
  cdr.insert(cdr.end(), text.c_str(), text.c_str() + text.size() + 1);
}

void CdrWriter::xWriteLength(std::size_t length, const Field& field) {
  if (length > std::numeric_limits<std::uint32_t>::max())
    throw std::invalid_argument(field.name + ": fewer than 2^32 elements expected, " +
                                std::to_string(length) + " given");
  const auto value = static_cast<std::uint32_t>(length);
  xWriteScalars(FieldKind::uint32, reinterpret_cast<const std::uint8_t*>(&value), 1);
}

void CdrWriter::xAlign(std::size_t size) {
  // Counted from behind the head, which is a multiple of 4 but not of 8.
  const std::size_t position = cdr.size() - sizeof kHead;
  cdr.resize(cdr.size() + (size - position % size) % size);
}

}  // namespace QV::ros2
