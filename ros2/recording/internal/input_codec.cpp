#include "ros2/recording/internal/input_codec.h"

#include <bit>
#include <stdexcept>
#include <utility>

namespace QV::ros2 {
namespace {

using Type = QVValue::Type;

// Deeper than any event is.
constexpr int kDeepestArray = 32;
// More than any robot's memory has, or any moment.
constexpr std::uint64_t kMostKeyBytes = std::uint64_t{16} << 20;
constexpr std::size_t kMostValues = 4'000'000;

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

[[noreturn]] void refuseInputs(const char* what, const char* given = "none") {
  throw std::runtime_error(std::string("inputs: ") + what + " expected, the message has " + given);
}

/** Takes a message's parts in turn. */
class Parts {
 public:
  explicit Parts(const qv_msgs::Inputs& inputs) : inputs(inputs) {}

  QVValue next(int depth = 0) {
    if (depth > kDeepestArray) refuseInputs("arrays at most 32 deep");
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
    refuseInputs("a type from 0 to 6");
  }

 private:
  template <typename Element>
  static const Element& take(const std::vector<Element>& from, std::size_t& place,
                             const char* what) {
    if (place >= from.size()) refuseInputs(what);
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

void InputDecoder::xLearn(const std::vector<std::string>& newKeys) {
  for (const std::string& key : newKeys) {
    keyBytes += sizeof key + key.size();
    if (keyBytes > kMostKeyBytes) refuseInputs("names of keys of up to 16 MB", "more");
    keys.push_back(key);
  }
}

std::vector<InputWrite> InputDecoder::decode(const qv_msgs::Inputs& inputs) {
  xLearn(inputs.new_keys);
  if (inputs.types.size() > kMostValues) refuseInputs("up to 4,000,000 values", "more");
  if (inputs.raised.size() != inputs.keys.size()) refuseInputs("a mark for each key");
  Parts parts(inputs);
  std::vector<InputWrite> writes;
  std::uint64_t nameBytes = 0;
  for (std::size_t i = 0; i < inputs.keys.size(); ++i) {
    if (inputs.keys[i] >= keys.size()) refuseInputs("the name of a key");
    nameBytes += keys[inputs.keys[i]].size();
    if (nameBytes > kMostKeyBytes) refuseInputs("names of up to 16 MB", "more");
    writes.push_back({keys[inputs.keys[i]], parts.next(), inputs.raised[i] != 0});
  }
  return writes;
}

}  // namespace QV::ros2
