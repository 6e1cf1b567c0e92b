#pragma once

#include <memory>
#include <string>

#include "ros2/bag/bag_writer.h"

namespace QV::ros2 {

/** Returns the name that the format has for it; "" for none. */
QV_API std::string getName(Compression compression);

/** Packs bytes, the same always to the same. Not copyable. */
class QV_API Packer {
 public:
  explicit Packer(Compression compression);
  ~Packer();
  Packer(const Packer&) = delete;
  Packer& operator=(const Packer&) = delete;

  /** Good until the next call; `bytes` itself if nothing is packed. */
  BytesView pack(BytesView bytes);

 private:
  const Compression compression;
  void* zstd = nullptr;
  Bytes packed;
};

/**
 * Unpacks into all of `bytes`. An unknown compression, damage, or more or fewer bytes throw
 * std::runtime_error.
 */
QV_API void unpack(const std::string& compression, BytesView packed, std::span<std::uint8_t> bytes);

}  // namespace QV::ros2
