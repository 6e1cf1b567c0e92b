#pragma once

#include <array>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/api.h"
#include "ros2/messages/message_type.h"

namespace QV::ros2 {

enum class FieldKind {
  boolean,
  byte,
  uint8,
  int8,
  int32,
  uint32,
  int64,
  float32,
  float64,
  string,
  message
};
enum class FieldShape { single, array, sequence };

/** The operations of a vector of any type. */
struct SequenceAccess {
  std::size_t (*getSize)(const void* sequence);
  const void* (*getData)(const void* sequence);
  /** Gives the elements. */
  void* (*resize)(void* sequence, std::size_t size);
};

struct Field {
  std::string name;
  FieldKind kind = FieldKind::boolean;
  FieldShape shape = FieldShape::single;
  /** The type of the elements, if these are messages. */
  const MessageType* type = nullptr;
  std::size_t offset = 0;
  /** The size of the member, and of one element. */
  std::size_t size = 0;
  std::size_t elementSize = 0;
  std::size_t alignment = 1;
  /** Elements, if not a sequence. */
  std::size_t count = 1;
  const SequenceAccess* sequence = nullptr;
  /** Letters that a string may have; 0: any number. */
  std::size_t stringBound = 0;
};

/** The layout of a message in memory and on the wire. */
struct QV_API MessageLayout {
  std::string name;
  std::vector<Field> fields;
  std::shared_ptr<void> (*make)();
  /** Bytes of the shortest message, without padding. */
  std::size_t leastBytes = 0;
  /** Scalars of the one kind that the whole message is made of; 0 if there is more in it. */
  std::size_t scalarCount = 0;
  FieldKind scalarKind = FieldKind::boolean;

  /** Throws std::logic_error for a gap between fields or before the end, because a field is missing
   * then. */
  MessageLayout(std::string name, std::vector<Field> fields, std::size_t size,
                std::size_t alignment, std::shared_ptr<void> (*make)());
};

/** The way into a type, for those who make and read its messages. */
struct MessageInside {
  static MessageType make(std::unique_ptr<const MessageLayout> layout) {
    return MessageType(std::move(layout));
  }
  static const MessageLayout& layoutOf(const MessageType& type) { return *type.layout; }
};

inline const MessageLayout& layoutOf(const MessageType& type) {
  return MessageInside::layoutOf(type);
}

/** Bytes of one scalar on the wire, as in memory; not of strings and messages. */
std::size_t getScalarSize(FieldKind kind);
/** Returns the name in .msg text: "float32". */
const char* getMsgName(FieldKind kind);

namespace detail {

template <typename T>
constexpr FieldKind kindOf() {
  if constexpr (std::is_same_v<T, bool>)
    return FieldKind::boolean;
  else if constexpr (std::is_same_v<T, std::byte>)
    return FieldKind::byte;
  else if constexpr (std::is_same_v<T, std::uint8_t>)
    return FieldKind::uint8;
  else if constexpr (std::is_same_v<T, std::int8_t>)
    return FieldKind::int8;
  else if constexpr (std::is_same_v<T, std::int32_t>)
    return FieldKind::int32;
  else if constexpr (std::is_same_v<T, std::uint32_t>)
    return FieldKind::uint32;
  else if constexpr (std::is_same_v<T, std::int64_t>)
    return FieldKind::int64;
  else if constexpr (std::is_same_v<T, float>)
    return FieldKind::float32;
  else if constexpr (std::is_same_v<T, double>)
    return FieldKind::float64;
  else if constexpr (std::is_same_v<T, std::string>)
    return FieldKind::string;
  else
    return FieldKind::message;
}

template <typename T>
void fillElement(Field& field) {
  field.kind = kindOf<T>();
  field.elementSize = sizeof(T);
  if constexpr (kindOf<T>() == FieldKind::message) field.type = &T::getType();
}

template <typename T>
struct FillShape {
  static void fill(Field& field) { fillElement<T>(field); }
};

template <typename T, std::size_t size>
struct FillShape<std::array<T, size>> {
  static void fill(Field& field) {
    fillElement<T>(field);
    field.shape = FieldShape::array;
    field.count = size;
  }
};

template <typename T>
struct FillShape<std::vector<T>> {
  static void fill(Field& field) {
    static constexpr SequenceAccess access = {
        [](const void* sequence) { return static_cast<const std::vector<T>*>(sequence)->size(); },
        [](const void* sequence) -> const void* {
          return static_cast<const std::vector<T>*>(sequence)->data();
        },
        [](void* sequence, std::size_t size) -> void* {
          static_cast<std::vector<T>*>(sequence)->resize(size);
          return static_cast<std::vector<T>*>(sequence)->data();
        }};
    fillElement<T>(field);
    field.shape = FieldShape::sequence;
    field.sequence = &access;
  }
};

}  // namespace detail

/** A field of `Message`, as {"name", &Message::member}. */
template <typename Message>
struct Member {
  template <typename T>
  Member(const char* name, T Message::*member, std::size_t stringBound = 0) {
    static const Message probe{};
    field.name = name;
    field.offset = static_cast<std::size_t>(reinterpret_cast<const char*>(&(probe.*member)) -
                                            reinterpret_cast<const char*>(&probe));
    field.size = sizeof(T);
    field.alignment = alignof(T);
    field.stringBound = stringBound;
    detail::FillShape<T>::fill(field);
  }
  Field field;
};

/** Makes the type of all fields of `Message` in their order; only the last may be left out. */
template <typename Message>
MessageType makeType(const char* name, const std::vector<Member<Message>>& members) {
  std::vector<Field> fields;
  fields.reserve(members.size());
  for (const auto& member : members) fields.push_back(member.field);
  return MessageInside::make(std::make_unique<const MessageLayout>(
      name, std::move(fields), sizeof(Message), alignof(Message),
      []() -> std::shared_ptr<void> { return std::make_shared<Message>(); }));
}

}  // namespace QV::ros2
