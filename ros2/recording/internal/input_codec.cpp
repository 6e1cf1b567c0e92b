#include "ros2/recording/internal/input_codec.h"

#include <bit>
#include <stdexcept>
#include <utility>

namespace QV::ros2 {
namespace {

using Type = QVValue::Type;

// Deeper than any event is.
constexpr int kDeepestArray = 32;

void append(qv_msgs::Inputs& inputs, const QVValue& value) {
  inputs.types.push_back(static_cast<std::uint8_t>(value.getType()));
  switch (value.getType()) {
    case Type::invalid:
      return;
    case Type::boolean:
    case Type::integer:
      return inputs.numbers.push_back(value.toInt());
    case Type::floating:
      return inputs.numbers.push_back(std::bit_cast<std::int64_t>(value.toDouble()));
    case Type::string:
      return inputs.texts.push_back(value.toString());
    case Type::array:
      inputs.numbers.push_back(static_cast<std::int64_t>(value.getSize()));
      for (const QVValue& element : value.toArray()) append(inputs, element);
      return;
    case Type::binary:
      inputs.numbers.push_back(static_cast<std::int64_t>(value.getSize()));
      inputs.numbers.insert(inputs.numbers.end(), value.toBinary()->begin(),
                            value.toBinary()->end());
  }
}

[[noreturn]] void refuse(const char* what) {
  throw std::runtime_error(std::string("inputs: ") + what + " expected, the message has none");
}

/** Takes a message's parts in turn. */
class Parts {
 public:
  explicit Parts(const qv_msgs::Inputs& inputs) : inputs(inputs) {}

  QVValue next(int depth = 0) {
    if (depth > kDeepestArray) refuse("arrays at most 32 deep");
    switch (Type{take(inputs.types, type, "a type")}) {
      case Type::invalid:
        return {};
      case Type::boolean:
        return xNumber() != 0;
      case Type::integer:
        return xNumber();
      case Type::floating:
        return std::bit_cast<double>(xNumber());
      case Type::string:
        return take(inputs.texts, text, "a text");
      case Type::array:
        return xArray(depth);
      case Type::binary:
        return xBytes();
    }
    refuse("a type from 0 to 6");
  }

 private:
  template <typename Element>
  static const Element& take(const std::vector<Element>& from, std::size_t& place,
                             const char* what) {
    if (place >= from.size()) refuse(what);
    return from[place++];
  }

  std::int64_t xNumber() { return take(inputs.numbers, number, "a number"); }

  QVValue xArray(int depth) {
    const std::int64_t size = xNumber();
    QVValue::Array array;
    for (std::int64_t i = 0; i < size; ++i) array.push_back(next(depth + 1));
    return array;
  }

  QVValue xBytes() {
    const std::int64_t size = xNumber();
    QVValue::Bytes bytes;
    for (std::int64_t i = 0; i < size; ++i) bytes.push_back(static_cast<std::uint8_t>(xNumber()));
    return bytes;
  }

  const qv_msgs::Inputs& inputs;
  std::size_t type = 0;
  std::size_t number = 0;
  std::size_t text = 0;
};

}  // namespace

void InputEncoder::add(qv_msgs::Inputs& inputs, const std::string& key, const QVValue& value,
                       bool raised) {
  auto known = numbers.find(key);
  if (known == numbers.end()) {
    known = numbers.emplace(key, static_cast<std::uint32_t>(numbers.size())).first;
    inputs.new_keys.push_back(key);
  }
  inputs.keys.push_back(known->second);
  inputs.raised.push_back(raised ? 1 : 0);
  append(inputs, value);
}

std::vector<InputWrite> InputDecoder::decode(const qv_msgs::Inputs& inputs) {
  keys.insert(keys.end(), inputs.new_keys.begin(), inputs.new_keys.end());
  if (inputs.raised.size() != inputs.keys.size()) refuse("a mark for each key");
  Parts parts(inputs);
  std::vector<InputWrite> writes;
  writes.reserve(inputs.keys.size());
  for (std::size_t i = 0; i < inputs.keys.size(); ++i) {
    if (inputs.keys[i] >= keys.size()) refuse("the name of a key");
    writes.push_back({keys[inputs.keys[i]], parts.next(), inputs.raised[i] != 0});
  }
  return writes;
}

}  // namespace QV::ros2
