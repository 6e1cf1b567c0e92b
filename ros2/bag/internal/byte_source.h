#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "ros2/messages/message_type.h"

namespace QV::ros2 {

/** Bytes that are read by their place. */
class ByteSource {
 public:
  virtual ~ByteSource() = default;

  std::uint64_t getSize() const { return size; }
  /** Fills `bytes` from `offset`; throws std::runtime_error if there are not so many. */
  void read(std::uint64_t offset, std::span<std::uint8_t> bytes) const;

 protected:
  std::uint64_t size = 0;

 private:
  virtual void xRead(std::uint64_t offset, std::span<std::uint8_t> bytes) const = 0;
};

/** Bytes of a source, read in large pieces by whoever goes on through it. */
class ByteWindow {
 public:
  explicit ByteWindow(const ByteSource& source) : source(source) {}

  /** The bytes there, good until the next call; throws as `read` does. */
  BytesView at(std::uint64_t place, std::uint64_t size);

 private:
  const ByteSource& source;
  std::uint64_t start = 0;
  Bytes bytes;
};

/** The CRC-32 of the bytes from one place to another. */
std::uint32_t crc32Between(const ByteSource& source, std::uint64_t begin, std::uint64_t end);

/** Opens a file. Throws std::runtime_error with its name if it can't be read. */
QV_API std::unique_ptr<ByteSource> openFile(const std::string& path);
/** `bytes` must outlive it. */
QV_API std::unique_ptr<ByteSource> openMemory(BytesView bytes);

}  // namespace QV::ros2
