#pragma once

#include <concepts>
#include <cstring>
#include <map>
#include <stdexcept>
#include <string>

#include "ros2/messages/message_type.h"

namespace QV::ros2 {

/** Appends the parts of MCAP records to bytes. */
class RecordWriter {
 public:
  explicit RecordWriter(Bytes& bytes) : bytes(bytes) {}

  template <std::unsigned_integral Number>
  RecordWriter& number(Number value) {
    const auto* const begin = reinterpret_cast<const std::uint8_t*>(&value);
    bytes.insert(bytes.end(), begin, begin + sizeof value);
    return *this;
  }
  RecordWriter& raw(BytesView value) {
    bytes.insert(bytes.end(), value.begin(), value.end());
    return *this;
  }
  RecordWriter& text(const std::string& value) {
    number(static_cast<std::uint32_t>(value.size()));
    bytes.insert(bytes.end(), value.begin(), value.end());
    return *this;
  }
  RecordWriter& texts(const std::map<std::string, std::string>& values);

 private:
  Bytes& bytes;
};

/** Takes MCAP records apart. Throws std::runtime_error if a record runs past the end. */
class RecordReader {
 public:
  explicit RecordReader(BytesView bytes) : bytes(bytes) {}

  template <std::unsigned_integral Number>
  Number number() {
    Number value;
    std::memcpy(&value, raw(sizeof value).data(), sizeof value);
    return value;
  }
  BytesView raw(std::uint64_t size) {
    if (size > bytes.size()) xFail(size);
    const BytesView taken = bytes.first(static_cast<std::size_t>(size));
    bytes = bytes.subspan(taken.size());
    return taken;
  }
  std::string text();
  std::map<std::string, std::string> texts();
  BytesView rest() { return raw(bytes.size()); }
  bool atEnd() const { return bytes.empty(); }

 private:
  [[noreturn]] void xFail(std::uint64_t size) const;

  BytesView bytes;
};

}  // namespace QV::ros2
