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

/** Opens a file. Throws std::runtime_error with its name if it can't be read. */
QV_API std::unique_ptr<ByteSource> openFile(const std::string& path);
/** `bytes` must outlive it. */
QV_API std::unique_ptr<ByteSource> openMemory(BytesView bytes);

}  // namespace QV::ros2
