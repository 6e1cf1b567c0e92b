#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "platform/api.h"
#include "platform/ko/clock.h"

namespace QV {

/**
 * A value of a type known at run time. Memory keys, event payloads, arguments and results hold such
 * values.
 *
 * - Types: bool, int (64 bits), float (a double inside), string, array of values, binary buffer.
 * - Units: none; the module that gives a value says what it means. Times and durations are ints, in
 *   nanoseconds.
 * - Special values: the invalid value stands for "no result".
 * - Conversions: ints and floats convert into each other, and a bool into 0 or 1; nothing else
 *   converts. A float that becomes an int is truncated, saturates at the int's limits and is 0 for
 *   NaN. isInt() and its like are exact: they look at the type alone.
 * - Lifetime: a value type. Arrays and binary buffers are immutable and shared, so a copy costs no
 *   more than a count. Moving never throws, and leaves an empty value of the type or the same one.
 * - Threads: reading is thread-safe. Writing needs a lock of your own.
 * - Errors: a missing conversion throws QVError with both types, a missing element with the index.
 *
 * A touch event, made and read again:
 *
 *     const QV::QVValue touch = QV::QVValue::array("FrontBumper", true, 2);
 *     std::cout << touch[0].toString() << (touch[1].toBool() ? " pressed" : " free") << '\n';
 *     for (const QV::QVValue& part : touch.toArray()) std::cout << part.toText() << '\n';
 *
 * A transform, as the module "QVMotion" answers it, and a value of a type that is not known:
 *
 *     const QV::QVValue rows = std::vector<float>{1, 0, 0, 0.2f, 0, 1, 0, 0, 0, 0, 1, 0.1f};
 *     const auto numbers = rows.as<std::vector<float>>();  // an int in it would convert, too
 *     const QV::QVValue key("0.5");
 *     std::cout << (key.isString() ? key.toString() : std::to_string(key.toFloat())) << '\n';
 */
class QV_API QVValue {
 public:
  /** The types, in the order of the alternatives inside. `floating` is always a double. */
  enum class Type { invalid, boolean, integer, floating, string, array, binary };
  /** The elements of an array, each of its own type. */
  using Array = std::vector<QVValue>;
  using Bytes = std::vector<std::uint8_t>;
  /** A buffer, such as the pixels of an image: shared, and never written to. */
  using Binary = std::shared_ptr<const Bytes>;

  /** Makes the invalid value. */
  QVValue() noexcept = default;
  /** Makes a bool; no pointer and no number turns into one. */
  template <std::same_as<bool> T>
  QVValue(T value) noexcept : data(value) {}
  /** Makes an int; an unsigned number above the 64-bit limit saturates. */
  template <std::integral T>
  requires(!std::same_as<T, bool>) QVValue(T value)
  noexcept : data(clampTo<std::int64_t>(value)) {}
  /** Makes a float, which keeps the precision of a double. */
  template <std::floating_point T>
  QVValue(T value) noexcept : data(static_cast<double>(value)) {}
  /** Makes a string, of any bytes. */
  QVValue(std::string value) noexcept : data(std::move(value)) {}
  QVValue(std::string_view value) : data(std::string(value)) {}
  QVValue(const char* value) : data(std::string(value)) {}
  /** A null pointer is no string: this does not compile. */
  QVValue(std::nullptr_t) = delete;
  /** Makes an array; its elements may have different types. */
  QVValue(Array value) : data(Shared<Array>{std::make_shared<const Array>(std::move(value))}) {}
  /** Makes a binary value that shares the buffer; a null pointer stands for no bytes. */
  QVValue(Binary value);
  QVValue(Bytes value) : QVValue(Binary(std::make_shared<const Bytes>(std::move(value)))) {}
  /** Makes an array of the elements. */
  template <typename T>
  /** Makes an array of the elements. T is any type that makes a value, also a vector again. */
  QVValue(const std::vector<T>& values) : QVValue(Array(values.begin(), values.end())) {}
  /** Makes an int, in nanoseconds of ko::Clock. */
  QVValue(ko::Clock::time_point value) noexcept : QVValue(value.time_since_epoch()) {}
  QVValue(ko::Duration value) noexcept : data(std::int64_t{value.count()}) {}

  /** Returns an array of the given values, each of its own type. */
  template <typename... T>
  /** Returns an array of the given values, each of its own type; array() is the empty one. */
  static QVValue array(T&&... values) {
    Array result;
    result.reserve(sizeof...(values));
    (result.emplace_back(std::forward<T>(values)), ...);
    return result;
  }

  /** Returns the exact type. isInt() and its like compare with it: the int 1 is no float. */
  Type getType() const noexcept { return static_cast<Type>(data.index()); }
  /** False for the invalid value, which a method without a result returns. */
  bool isValid() const noexcept { return getType() != Type::invalid; }
  bool isBool() const noexcept { return getType() == Type::boolean; }
  bool isInt() const noexcept { return getType() == Type::integer; }
  bool isFloat() const noexcept { return getType() == Type::floating; }
  bool isString() const noexcept { return getType() == Type::string; }
  bool isArray() const noexcept { return getType() == Type::array; }
  bool isBinary() const noexcept { return getType() == Type::binary; }

  /** Returns the bool. Throws QVError for other types; numbers do not convert. */
  bool toBool() const;
  /** Converts a number or a bool. Throws QVError for other types, as those below do. */
  std::int64_t toInt() const;
  /** Converts as toInt() does; saturates at the limits of 32 bits. */
  std::int32_t toInt32() const { return clampTo<std::int32_t>(toInt()); }
  /** Converts a number or a bool to a float. */
  float toFloat() const { return static_cast<float>(toDouble()); }
  /** Converts a number or a bool; ints above 2^53 are rounded. */
  double toDouble() const;
  /** Returns the string. The references are valid until this value is assigned to or destroyed. */
  const std::string& toString() const;
  /** Returns the elements, each of its own type. */
  const Array& toArray() const;
  /** Returns the buffer; never null. */
  const Binary& toBinary() const;

  /**
   * Returns the value as a T, which is one of these:
   * - bool, from a bool only;
   * - an integer, which saturates, or a float, from a number or a bool;
   * - std::string, Array, Binary or Bytes, each from its own type only;
   * - a std::vector of such types, from an array: every element must convert;
   * - ko::Clock::time_point or ko::Duration, from an int only;
   * - QVValue, from anything: the value itself.
   * Throws QVError if it does not convert; any other T does not compile.
   */
  template <typename T>
  T as() const;

  /** Returns the number of elements of an array, or of bytes of a string or buffer. Throws QVError
   * for other types. */
  std::size_t getSize() const;
  /** Returns an element of an array, counted from 0. Throws QVError out of range. */
  const QVValue& operator[](std::size_t index) const;

  /** Returns a text for people: strings in quotes, arrays in brackets, a buffer as its size. */
  std::string toText() const;

  /** Compares type and content: the int 1 and the float 1.0 differ. */
  friend bool operator==(const QVValue&, const QVValue&) = default;

  /** Returns "int", "float", ... */
  static const char* getTypeName(Type type);
  /** The name of the type that as<T>() expects: also "any", or "array of float". */
  template <typename T>
  static std::string getTypeName();

 private:
  /** A shared content that compares by its elements, not by its address. */
  template <typename T>
  struct Shared {
    std::shared_ptr<const T> content;
    friend bool operator==(const Shared& a, const Shared& b) { return *a.get() == *b.get(); }
    // Null when it was moved from: that counts as empty.
    const std::shared_ptr<const T>& get() const {
      static const auto empty = std::make_shared<const T>();
      return content ? content : empty;
    }
  };

  /** The nearest value that To can hold. */
  template <typename To, typename From>
  static constexpr To clampTo(From value) noexcept {
    if (std::in_range<To>(value)) return static_cast<To>(value);
    return std::cmp_less(value, 0) ? std::numeric_limits<To>::min()
                                   : std::numeric_limits<To>::max();
  }
  /** Throws the QVError of a missing conversion. */
  [[noreturn]] void xRefuse(const char* method, const char* expected) const;
  std::int64_t xToNanoseconds() const;
  template <typename T>
  std::vector<T> xToVector() const;

  std::variant<std::monostate, bool, std::int64_t, double, std::string, Shared<Array>,
               Shared<Bytes>>
      data;
};

/** Writes toText(). */
QV_API std::ostream& operator<<(std::ostream& stream, const QVValue& value);

namespace detail {

template <typename T>
inline constexpr bool kIsVector = false;
template <typename T>
inline constexpr bool kIsVector<std::vector<T>> = true;
template <typename T>
inline constexpr bool kIsTime =
    std::is_same_v<T, ko::Clock::time_point> || std::is_same_v<T, ko::Duration>;

}  // namespace detail

template <typename T>
T QVValue::as() const {
  if constexpr (std::is_same_v<T, QVValue>) {
    return *this;
  } else if constexpr (std::is_same_v<T, bool>) {
    return toBool();
  } else if constexpr (std::integral<T>) {
    return clampTo<T>(toInt());
  } else if constexpr (std::floating_point<T>) {
    return static_cast<T>(toDouble());
  } else if constexpr (std::is_same_v<T, std::string>) {
    return toString();
  } else if constexpr (std::is_same_v<T, Array>) {
    return toArray();
  } else if constexpr (std::is_same_v<T, Binary>) {
    return toBinary();
  } else if constexpr (std::is_same_v<T, Bytes>) {
    return *toBinary();
  } else if constexpr (detail::kIsTime<T>) {
    return T(ko::Duration(xToNanoseconds()));
  } else {
    static_assert(detail::kIsVector<T>, "no conversion of a QVValue into this type");
    return xToVector<typename T::value_type>();
  }
}

template <typename T>
std::vector<T> QVValue::xToVector() const {
  const Array& elements = toArray();
  std::vector<T> result;
  result.reserve(elements.size());
  for (const QVValue& element : elements) result.push_back(element.as<T>());
  return result;
}

template <typename T>
std::string QVValue::getTypeName() {
  if constexpr (std::is_same_v<T, QVValue>) {
    return "any";
  } else if constexpr (std::is_same_v<T, bool>) {
    return "bool";
  } else if constexpr (std::integral<T> || detail::kIsTime<T>) {
    return "int";
  } else if constexpr (std::floating_point<T>) {
    return "float";
  } else if constexpr (std::is_same_v<T, std::string>) {
    return "string";
  } else if constexpr (std::is_same_v<T, Binary> || std::is_same_v<T, Bytes>) {
    return "binary";
  } else {
    return "array of " + getTypeName<typename T::value_type>();
  }
}

}  // namespace QV
