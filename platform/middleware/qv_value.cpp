#include "platform/middleware/qv_value.h"

#include <array>
#include <charconv>
#include <cmath>
#include <ostream>

#include "platform/middleware/qv_error.h"

namespace QV {
namespace {

static_assert(std::is_nothrow_move_constructible_v<QVValue>);
static_assert(std::is_nothrow_move_assignable_v<QVValue>);

std::int64_t truncate(double value) {
  constexpr double kLimit = 9223372036854775808.0;
  if (std::isnan(value)) return 0;
  if (value >= kLimit) return std::numeric_limits<std::int64_t>::max();
  if (value < -kLimit) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(value);
}

template <typename T>
std::string shortest(T value) {
  std::array<char, 64> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
  return std::string(buffer.data(), end);
}

// A value that came from a float is written as that float: 0.1, not 0.10000000149011612.
std::string textOf(double value) {
  const auto single = static_cast<float>(value);
  std::string text = static_cast<double>(single) == value ? shortest(single) : shortest(value);
  if (text.find_first_not_of("-0123456789") == std::string::npos) text += ".0";
  return text;
}

std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') result += '\\';
    result += c;
  }
  return result + '"';
}

std::string textOf(const QVValue::Array& elements) {
  std::string result = "[";
  for (const QVValue& element : elements) {
    if (result.size() > 1) result += ", ";
    result += element.toText();
  }
  return result + "]";
}

}  // namespace

QVValue::QVValue(Binary value) : data(Shared<Bytes>{std::move(value)}) {}

bool QVValue::toBool() const {
  if (const bool* value = std::get_if<bool>(&data)) return *value;
  xRefuse("toBool", "bool");
}

std::int64_t QVValue::toInt() const {
  if (const auto* value = std::get_if<std::int64_t>(&data)) return *value;
  if (const auto* value = std::get_if<double>(&data)) return truncate(*value);
  if (const auto* value = std::get_if<bool>(&data)) return *value ? 1 : 0;
  xRefuse("toInt", "int");
}

double QVValue::toDouble() const {
  if (const auto* value = std::get_if<double>(&data)) return *value;
  if (const auto* value = std::get_if<std::int64_t>(&data)) return static_cast<double>(*value);
  if (const auto* value = std::get_if<bool>(&data)) return *value ? 1.0 : 0.0;
  xRefuse("toFloat", "float");
}

const std::string& QVValue::toString() const {
  if (const auto* value = std::get_if<std::string>(&data)) return *value;
  xRefuse("toString", "string");
}

const QVValue::Array& QVValue::toArray() const {
  if (const auto* value = std::get_if<Shared<Array>>(&data)) return *value->get();
  xRefuse("toArray", "array");
}

const QVValue::Binary& QVValue::toBinary() const {
  if (const auto* value = std::get_if<Shared<Bytes>>(&data)) return value->get();
  xRefuse("toBinary", "binary");
}

std::int64_t QVValue::xToNanoseconds() const {
  if (const auto* value = std::get_if<std::int64_t>(&data)) return *value;
  xRefuse("as", "int");
}

std::size_t QVValue::getSize() const {
  if (isString()) return toString().size();
  if (isBinary()) return toBinary()->size();
  if (isArray()) return toArray().size();
  xRefuse("getSize", "array, string or binary");
}

const QVValue& QVValue::operator[](std::size_t index) const {
  const Array& elements = toArray();
  if (index < elements.size()) return elements[index];
  throw QVError(
      "QVValue", "operator[]",
      "no element " + std::to_string(index) + " in an array of " + std::to_string(elements.size()));
}

std::string QVValue::toText() const {
  switch (getType()) {
    case Type::boolean:
      return toBool() ? "true" : "false";
    case Type::integer:
      return std::to_string(toInt());
    case Type::floating:
      return textOf(toDouble());
    case Type::string:
      return quoted(toString());
    case Type::array:
      return textOf(toArray());
    case Type::binary:
      return "binary of " + std::to_string(getSize()) + " bytes";
    case Type::invalid:
      break;
  }
  return "invalid";
}

const char* QVValue::getTypeName(Type type) {
  constexpr const char* kNames[] = {"invalid", "bool", "int", "float", "string", "array", "binary"};
  return kNames[static_cast<std::size_t>(type)];
}

void QVValue::xRefuse(const char* method, const char* expected) const {
  throw QVError("QVValue", method,
                std::string(expected) + " expected, " + getTypeName(getType()) + " given");
}

std::ostream& operator<<(std::ostream& stream, const QVValue& value) {
  return stream << value.toText();
}

}  // namespace QV
