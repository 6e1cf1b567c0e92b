#pragma once

#include <cmath>
#include <cstring>
#include <memory>

#include <nlohmann/json.hpp>

#include "ros2/messages/internal/layout.h"

namespace QV::test {

/** Calls `visit(field, element)` for each element of each field that is no message. */
template <typename Visit>
void visitElements(const ros2::Field& field, std::uint8_t* elements, std::size_t count,
                   const Visit& visit) {
  for (std::size_t i = 0; i < count; ++i) {
    if (field.kind != ros2::FieldKind::message) {
      visit(field, elements + i * field.elementSize);
      continue;
    }
    for (const ros2::Field& inner : layoutOf(*field.type).fields) {
      std::uint8_t* member = elements + i * field.elementSize + inner.offset;
      std::size_t size = inner.count;
      if (inner.sequence != nullptr) {
        // A different size for each, and some of them empty at the beginning of a message.
        size = inner.name.size() % 4;
        member = static_cast<std::uint8_t*>(inner.sequence->resize(member, size));
      }
      visitElements(inner, member, size, visit);
    }
  }
}

template <typename T>
void put(void* place, T value) {
  std::memcpy(place, &value, sizeof value);
}

/** A message whose values all differ, as far as their types let them; NaN and infinity, too. */
inline std::shared_ptr<void> fillMessage(const ros2::MessageType& type) {
  const auto message = layoutOf(type).make();
  ros2::Field whole;
  whole.kind = ros2::FieldKind::message;
  whole.type = &type;
  int count = 0;
  visitElements(whole, static_cast<std::uint8_t*>(message.get()), 1,
                [&](const ros2::Field& field, std::uint8_t* element) {
                  ++count;
                  const float real = count % 11 == 0   ? std::nanf("")
                                     : count % 13 == 0 ? -HUGE_VALF
                                                       : 0.1f * static_cast<float>(count);
                  switch (field.kind) {
                    case ros2::FieldKind::boolean:
                      return put(element, count % 2 == 1);
                    case ros2::FieldKind::int32:
                      return put(element, -count * 70'000);
                    case ros2::FieldKind::uint32:
                      return put(element, 0xF0000000u + static_cast<unsigned>(count));
                    case ros2::FieldKind::int64:
                      return put(element, std::int64_t{-count} << 40);
                    case ros2::FieldKind::float32:
                      return put(element, real);
                    case ros2::FieldKind::float64:
                      return put(element, 0.7 * double{real});
                    case ros2::FieldKind::string:
                      *reinterpret_cast<std::string*>(element) =
                          std::string(static_cast<std::size_t>(count) % 7, 'a') + "\xc3\xa9";
                      return;
                    default:
                      return put(element, static_cast<std::uint8_t>(200 + count));
                  }
                });
  return message;
}

inline nlohmann::json toJson(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value < 0 ? "-Infinity" : "Infinity";
  return value;
}

template <typename T>
T get(const void* place) {
  T value;
  std::memcpy(&value, place, sizeof value);
  return value;
}

inline nlohmann::json toJson(const ros2::MessageType& type, const void* message);

inline nlohmann::json elementToJson(const ros2::Field& field, const void* element) {
  switch (field.kind) {
    case ros2::FieldKind::boolean:
      return get<bool>(element);
    case ros2::FieldKind::int8:
      return get<std::int8_t>(element);
    case ros2::FieldKind::int32:
      return get<std::int32_t>(element);
    case ros2::FieldKind::uint32:
      return get<std::uint32_t>(element);
    case ros2::FieldKind::int64:
      return std::to_string(get<std::int64_t>(element));
    case ros2::FieldKind::float32:
      return toJson(get<float>(element));
    case ros2::FieldKind::float64:
      return toJson(get<double>(element));
    case ros2::FieldKind::string:
      return *static_cast<const std::string*>(element);
    case ros2::FieldKind::message:
      return toJson(*field.type, element);
    default:
      return get<std::uint8_t>(element);
  }
}

/** Converts to JSON by names; 64-bit integers as text. */
inline nlohmann::json toJson(const ros2::MessageType& type, const void* message) {
  nlohmann::json json = nlohmann::json::object();
  for (const ros2::Field& field : layoutOf(type).fields) {
    const auto* elements = static_cast<const std::uint8_t*>(message) + field.offset;
    std::size_t count = field.count;
    if (field.sequence != nullptr) {
      count = field.sequence->getSize(elements);
      elements = static_cast<const std::uint8_t*>(field.sequence->getData(elements));
    }
    if (field.shape == ros2::FieldShape::single) {
      json[field.name] = elementToJson(field, elements);
      continue;
    }
    json[field.name] = nlohmann::json::array();
    for (std::size_t i = 0; i < count; ++i)
      json[field.name].push_back(elementToJson(field, elements + i * field.elementSize));
  }
  return json;
}

}  // namespace QV::test
