#include "ros2/messages/internal/layout.h"

#include <stdexcept>

namespace QV::ros2 {
namespace {

struct KindRow {
  const char* msgName;
  std::size_t size;
};

/** The kinds in the order of FieldKind. */
constexpr KindRow kKinds[] = {{"bool", 1},    {"byte", 1},   {"uint8", 1}, {"int8", 1},
                              {"int32", 4},   {"uint32", 4}, {"int64", 8}, {"float32", 4},
                              {"float64", 8}, {"string", 0}, {"", 0}};

std::size_t alignUp(std::size_t offset, std::size_t alignment) {
  return (offset + alignment - 1) / alignment * alignment;
}

void checkCover(const MessageLayout& layout, std::size_t size, std::size_t alignment) {
  std::size_t end = 0;
  for (const Field& field : layout.fields) {
    if (field.offset != alignUp(end, field.alignment))
      throw std::logic_error(layout.name + ": a field before " + field.name + " is missing");
    end = field.offset + field.size;
  }
  if (end + alignment <= size) throw std::logic_error(layout.name + ": the last field is missing");
}

std::size_t leastBytesOf(const Field& field) {
  if (field.shape == FieldShape::sequence) return sizeof(std::uint32_t);
  if (field.kind == FieldKind::string) return field.count * sizeof(std::uint32_t);
  if (field.kind == FieldKind::message) return field.count * layoutOf(*field.type).leastBytes;
  return field.count * getScalarSize(field.kind);
}

/** Returns how many scalars of which kind a field is made of; 0 if it is anything else. */
std::pair<std::size_t, FieldKind> scalarsOf(const Field& field) {
  if (field.shape == FieldShape::sequence || field.kind == FieldKind::string ||
      field.kind == FieldKind::boolean)
    return {0, field.kind};
  if (field.kind != FieldKind::message) return {field.count, field.kind};
  const auto& layout = layoutOf(*field.type);
  return {field.count * layout.scalarCount, layout.scalarKind};
}

}  // namespace

std::size_t getScalarSize(FieldKind kind) {
  return kKinds[static_cast<std::size_t>(kind)].size;
}

const char* getMsgName(FieldKind kind) {
  return kKinds[static_cast<std::size_t>(kind)].msgName;
}

MessageLayout::MessageLayout(std::string name, std::vector<Field> fields, std::size_t size,
                             std::size_t alignment, std::shared_ptr<void> (*make)())
    : name(std::move(name)), fields(std::move(fields)), make(make) {
  checkCover(*this, size, alignment);
  for (const Field& field : this->fields) leastBytes += leastBytesOf(field);
  scalarKind = scalarsOf(this->fields.front()).second;
  for (const Field& field : this->fields) {
    const auto [count, kind] = scalarsOf(field);
    if (count == 0 || kind != scalarKind) {
      scalarCount = 0;
      return;
    }
    scalarCount += count;
  }
}

}  // namespace QV::ros2
