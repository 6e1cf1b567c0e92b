#include "ros2/bag/internal/record_bytes.h"

namespace QV::ros2 {

RecordWriter& RecordWriter::texts(const std::map<std::string, std::string>& values) {
  Bytes entries;
  for (const auto& [key, value] : values) RecordWriter(entries).text(key).text(value);
  return number(static_cast<std::uint32_t>(entries.size())).raw(entries);
}

void RecordReader::xFail(std::uint64_t size) const {
  throw std::runtime_error(std::to_string(size) + " bytes expected, " +
                           std::to_string(bytes.size()) + " given");
}

std::string RecordReader::text() {
  const BytesView letters = raw(number<std::uint32_t>());
  return {letters.begin(), letters.end()};
}

std::map<std::string, std::string> RecordReader::texts() {
  RecordReader entries(raw(number<std::uint32_t>()));
  std::map<std::string, std::string> values;
  while (!entries.atEnd()) {
    std::string key = entries.text();
    values[std::move(key)] = entries.text();
  }
  return values;
}

}  // namespace QV::ros2
