#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/middleware/qv_value.h"

namespace QV::fuzz {

/**
 * Options of the address sanitizer. Half as fast with stacks kept behind each exception and long
 * traces of each allocation; less memory is freed late or filled, as that takes time, too.
 */
inline constexpr char kQuick[] =
    "detect_stack_use_after_return=0:malloc_context_size=2:quarantine_size_mb=16:"
    "max_malloc_fill_size=0";

/** Ends the run, with the input kept, if something does not hold. */
inline void check(bool holds, const char* what) {
  if (!holds) throw std::logic_error(what);
}

/** True for one of `count` inputs, which no small change of an input chooses. */
inline bool isOneOf(std::size_t count, const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  return std::hash<std::string_view>()(input) % count == 0;
}

/**
 * Makes values of any bytes, so that a small change of the bytes is a small change of the value:
 * the low three bits of a byte choose the type, the others are a bool, a small int or a size, and
 * the content follows. Bytes that are missing count as 0; an array ends where the bytes end, and is
 * empty inside of kMostDepth others.
 */
class ValueDecoder {
 public:
  ValueDecoder(const std::uint8_t* data, std::size_t size) : bytes(data, size) {}

  QVValue next() {
    const auto tag = xTake<std::uint8_t>();
    const std::size_t rest = tag >> 3;
    switch (tag & 7) {
      case 1:
        return rest % 2 == 1;
      case 2:
        return static_cast<int>(rest) - 8;
      case 3:
        return xTake<std::int64_t>();
      case 4:
        return xTake<double>();
      case 5:
        return xTakeBytes<std::string>(rest);
      case 6:
        return xTakeArray(rest);
      case 7:
        return xTakeBytes<QVValue::Bytes>(rest);
      default:
        return QVValue();
    }
  }

 private:
  static constexpr int kMostDepth = 8;

  std::span<const std::uint8_t> xTakeSpan(std::size_t size) {
    const auto taken = bytes.first(std::min(size, bytes.size()));
    bytes = bytes.subspan(taken.size());
    return taken;
  }

  template <typename T>
  T xTake() {
    T result{};
    const auto taken = xTakeSpan(sizeof result);
    std::copy(taken.begin(), taken.end(), reinterpret_cast<std::uint8_t*>(&result));
    return result;
  }

  template <typename T>
  T xTakeBytes(std::size_t size) {
    const auto taken = xTakeSpan(size);
    return T(taken.begin(), taken.end());
  }

  QVValue::Array xTakeArray(std::size_t size) {
    QVValue::Array elements;
    if (depth == kMostDepth) return elements;
    ++depth;
    while (elements.size() < size && !bytes.empty()) elements.push_back(next());
    --depth;
    return elements;
  }

  std::span<const std::uint8_t> bytes;
  int depth = 0;
};

}  // namespace QV::fuzz
