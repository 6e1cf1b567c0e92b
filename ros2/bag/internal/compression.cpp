#include "ros2/bag/internal/compression.h"

#include <algorithm>
#include <lz4frame.h>
#include <stdexcept>
#include <zstd.h>

namespace QV::ros2 {
namespace {

// This level packs as fast as the result is written, to a third of the size of lz4.
constexpr int kZstdLevel = -3;

void expectSize(std::size_t expected, std::size_t given) {
  if (expected != given)
    throw std::runtime_error(std::to_string(expected) + " bytes expected, unpacked " +
                             std::to_string(given));
}

// The context is kept: making one per chunk would take longer than a small chunk.
void unpackZstd(BytesView packed, std::span<std::uint8_t> bytes) {
  thread_local const std::unique_ptr<ZSTD_DCtx, std::size_t (*)(ZSTD_DCtx*)> context(
      ZSTD_createDCtx(), ZSTD_freeDCtx);
  const std::size_t size =
      ZSTD_decompressDCtx(context.get(), bytes.data(), bytes.size(), packed.data(), packed.size());
  if (ZSTD_isError(size)) throw std::runtime_error(std::string("zstd: ") + ZSTD_getErrorName(size));
  expectSize(bytes.size(), size);
}

std::size_t checkLz4(std::size_t result) {
  if (LZ4F_isError(result))
    throw std::runtime_error(std::string("lz4: ") + LZ4F_getErrorName(result));
  return result;
}

using Lz4Context = std::unique_ptr<LZ4F_dctx, LZ4F_errorCode_t (*)(LZ4F_dctx*)>;

Lz4Context makeLz4Context() {
  LZ4F_dctx* context = nullptr;
  checkLz4(LZ4F_createDecompressionContext(&context, LZ4F_VERSION));
  return {context, LZ4F_freeDecompressionContext};
}

void unpackLz4(BytesView packed, std::span<std::uint8_t> bytes) {
  thread_local const auto owner = makeLz4Context();
  LZ4F_dctx* const context = owner.get();
  LZ4F_resetDecompressionContext(context);
  std::size_t written = 0;
  std::size_t read = 0;
  std::size_t hint = 1;
  while (hint != 0) {
    std::size_t room = bytes.size() - written;
    std::size_t left = packed.size() - read;
    hint = checkLz4(LZ4F_decompress(context, bytes.data() + written, &room, packed.data() + read,
                                    &left, nullptr));
    if (hint != 0 && room == 0 && left == 0)
      throw std::runtime_error("lz4: " + std::to_string(bytes.size()) +
                               " bytes expected, the frame has more or is cut");
    written += room;
    read += left;
  }
  expectSize(bytes.size(), written);
  if (read != packed.size()) throw std::runtime_error("lz4: bytes behind the frame");
}

}  // namespace

std::string getName(Compression compression) {
  constexpr const char* kNames[] = {"", "lz4", "zstd"};
  return kNames[static_cast<std::size_t>(compression)];
}

Packer::Packer(Compression compression) : compression(compression) {
  if (compression != Compression::zstd) return;
  auto* const context = ZSTD_createCCtx();
  ZSTD_CCtx_setParameter(context, ZSTD_c_compressionLevel, kZstdLevel);
  zstd = context;
}

Packer::~Packer() {
  ZSTD_freeCCtx(static_cast<ZSTD_CCtx*>(zstd));
}

BytesView Packer::pack(BytesView bytes) {
  if (compression == Compression::none) return bytes;
  std::size_t size = 0;
  if (compression == Compression::zstd) {
    packed.resize(std::max(packed.size(), ZSTD_compressBound(bytes.size())));
    size = ZSTD_compress2(static_cast<ZSTD_CCtx*>(zstd), packed.data(), packed.size(), bytes.data(),
                          bytes.size());
    if (ZSTD_isError(size))
      throw std::runtime_error(std::string("zstd: ") + ZSTD_getErrorName(size));
  } else {
    packed.resize(std::max(packed.size(), LZ4F_compressFrameBound(bytes.size(), nullptr)));
    size = checkLz4(
        LZ4F_compressFrame(packed.data(), packed.size(), bytes.data(), bytes.size(), nullptr));
  }
  return {packed.data(), size};
}

void unpack(const std::string& compression, BytesView packed, std::span<std::uint8_t> bytes) {
  if (compression == "zstd") return unpackZstd(packed, bytes);
  if (compression == "lz4") return unpackLz4(packed, bytes);
  if (!compression.empty())
    throw std::runtime_error("compression zstd, lz4 or none expected, \"" +
                             compression.substr(0, 20) + "\" given");
  expectSize(bytes.size(), packed.size());
  std::copy(packed.begin(), packed.end(), bytes.begin());
}

}  // namespace QV::ros2
