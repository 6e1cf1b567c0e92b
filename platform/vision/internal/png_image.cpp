#include "platform/vision/internal/png_image.h"

#include <algorithm>
#include <bit>
#include <csetjmp>
#include <cstdint>
#include <png.h>
#include <stdexcept>
#include <utility>
#include <vector>

namespace QV::detail {
namespace {

// The limit keeps three times this number within an int.
constexpr std::uint64_t kMostPixels = 1 << 29;

// The reason is dropped: callers only need to know that it failed.
[[noreturn]] void onError(png_structp png, png_const_charp) {
  png_longjmp(png, 1);
}

void onWarning(png_structp, png_const_charp) {}

class Decoder {
 public:
  explicit Decoder(std::string_view bytes)
      : rest(bytes),
        png(png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, onError, onWarning)) {
    if (png) info = png_create_info_struct(png);
    if (png) png_set_read_fn(png, this, read);
  }
  ~Decoder() { png_destroy_read_struct(&png, &info, nullptr); }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  bool decode(cv::Mat& image) { return info && xReadInfo() && xMakeRows(image) && xReadRows(); }

 private:
  static void read(png_structp png, png_bytep to, std::size_t size) {
    auto& rest = static_cast<Decoder*>(png_get_io_ptr(png))->rest;
    if (size > rest.size()) png_error(png, "");
    std::copy_n(rest.begin(), size, to);
    rest.remove_prefix(size);
  }

  // An error leaves these two by a jump: nothing in them may have to be destroyed.
  bool xReadInfo() {
    if (setjmp(png_jmpbuf(png)) != 0) return false;
    png_read_info(png, info);
    png_set_expand(png);
    png_set_strip_alpha(png);
    png_set_bgr(png);
    if (std::endian::native == std::endian::little) png_set_swap(png);
    png_set_interlace_handling(png);
    png_read_update_info(png, info);
    return true;
  }

  bool xReadRows() {
    if (setjmp(png_jmpbuf(png)) != 0) return false;
    png_read_image(png, rows.data());
    png_read_end(png, nullptr);
    return true;
  }

  bool xMakeRows(cv::Mat& image) {
    const std::uint64_t width = png_get_image_width(png, info);
    const std::uint64_t height = png_get_image_height(png, info);
    if (width * height > kMostPixels) return false;
    const int depth = png_get_bit_depth(png, info) == 16 ? CV_16U : CV_8U;
    image.create(static_cast<int>(height), static_cast<int>(width),
                 CV_MAKETYPE(depth, png_get_channels(png, info)));
    for (int row = 0; row < image.rows; ++row) rows.push_back(image.ptr(row));
    return true;
  }

  std::string_view rest;
  png_structp png;
  png_infop info = nullptr;
  std::vector<png_bytep> rows;
};

class Encoder {
 public:
  Encoder() : png(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, onError, onWarning)) {
    if (png) info = png_create_info_struct(png);
    if (png) png_set_write_fn(png, this, write, nullptr);
  }
  ~Encoder() { png_destroy_write_struct(&png, &info); }
  Encoder(const Encoder&) = delete;
  Encoder& operator=(const Encoder&) = delete;

  bool encode(const cv::Mat& image) {
    if (!info || setjmp(png_jmpbuf(png)) != 0) return false;
    const int colours = image.channels() == 1 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB;
    png_set_IHDR(png, info, static_cast<png_uint_32>(image.cols),
                 static_cast<png_uint_32>(image.rows), 8, colours, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
    png_set_compression_level(png, kFast);
    png_set_compression_strategy(png, kRuns);
    png_write_info(png, info);
    png_set_bgr(png);
    for (int row = 0; row < image.rows; ++row) png_write_row(png, image.ptr(row));
    png_write_end(png, info);
    return true;
  }

  std::string bytes;

 private:
  static constexpr int kFast = 1;
  static constexpr int kRuns = 3;

  static void write(png_structp png, png_bytep from, std::size_t size) {
    static_cast<Encoder*>(png_get_io_ptr(png))->bytes.append(from, from + size);
  }

  png_structp png;
  png_infop info = nullptr;
};

}  // namespace

cv::Mat decodePng(std::string_view bytes) {
  cv::Mat image;
  if (Decoder(bytes).decode(image)) return image;
  throw std::runtime_error("a whole PNG image expected");
}

std::string encodePng(const cv::Mat& image) {
  if (image.type() != CV_8UC1 && image.type() != CV_8UC3)
    throw std::invalid_argument("an image of 8 bits, grey or colour, expected");
  Encoder encoder;
  if (!encoder.encode(image)) throw std::runtime_error("the image can't be made a PNG");
  return std::move(encoder.bytes);
}

}  // namespace QV::detail
