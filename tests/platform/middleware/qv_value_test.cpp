#include "platform/middleware/qv_value.h"

#include <cmath>
#include <functional>
#include <limits>
#include <set>
#include <sstream>

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include "tests/support/vocabulary.h"

namespace QV {
namespace {

constexpr auto kMaxInt = std::numeric_limits<std::int64_t>::max();
constexpr auto kMinInt = std::numeric_limits<std::int64_t>::min();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
const double kNan = std::nan("");

/** Values of all types, one of each. */
std::vector<QVValue> oneOfEach() {
  return {QVValue(),
          QVValue(true),
          QVValue(1),
          QVValue(2.5),
          QVValue("text"),
          QVValue::array(1, "two"),
          QVValue(QVValue::Bytes{1, 2})};
}

TEST(QVValue, numbersConvertIntoEachOtherAndNothingElseDoes) {
  struct Conversion {
    const char* method;
    const char* expected;
    std::function<void(const QVValue&)> convert;
    std::set<std::string> from;
  };
  const Conversion conversions[] = {
      {"toBool", "bool", [](const QVValue& value) { value.toBool(); }, {"bool"}},
      {"toInt", "int", [](const QVValue& value) { value.toInt(); }, {"bool", "int", "float"}},
      {"toFloat", "float", [](const QVValue& value) { value.toFloat(); }, {"bool", "int", "float"}},
      {"toString", "string", [](const QVValue& value) { value.toString(); }, {"string"}},
      {"toArray", "array", [](const QVValue& value) { value.toArray(); }, {"array"}},
      {"toBinary", "binary", [](const QVValue& value) { value.toBinary(); }, {"binary"}},
  };
  for (const QVValue& value : oneOfEach()) {
    const std::string type = QVValue::getTypeName(value.getType());
    for (const auto& [method, expected, convert, from] : conversions) {
      const std::string refusal =
          std::string("QVValue::") + method + ": " + expected + " expected, " + type + " given";
      EXPECT_EQ(errorOf([&, &to = convert] { to(value); }), from.contains(type) ? "" : refusal);
    }
  }
}

TEST(QVValue, aFloatThatBecomesAnIntIsTruncatedAndSaturates) {
  struct Case {
    double value;
    std::int64_t expected;
    std::int32_t expected32;
  };
  constexpr auto kMax32 = std::numeric_limits<std::int32_t>::max();
  constexpr auto kMin32 = std::numeric_limits<std::int32_t>::min();
  const Case cases[] = {
      {2.9, 2, 2},
      {-2.9, -2, -2},
      {kNan, 0, 0},
      {kInfinity, kMaxInt, kMax32},
      {-kInfinity, kMinInt, kMin32},
      {9223372036854775808.0, kMaxInt, kMax32},
      {-9223372036854775808.0, kMinInt, kMin32},
      {1e10, 10'000'000'000, kMax32},
      {-1e10, -10'000'000'000, kMin32},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(QVValue(c.value).toInt(), c.expected) << c.value;
    EXPECT_EQ(QVValue(c.value).toInt32(), c.expected32) << c.value;
  }
}

TEST(QVValue, integersOfEverySizeKeepTheirValueOrSaturate) {
  EXPECT_EQ(QVValue(std::uint64_t{1} << 63).toInt(), kMaxInt);
  EXPECT_EQ(QVValue(std::uint32_t{4'000'000'000}).toInt(), 4'000'000'000);
  EXPECT_EQ(QVValue(-1).as<std::uint8_t>(), 0);
  EXPECT_EQ(QVValue(300).as<std::uint8_t>(), 255);
  EXPECT_EQ(QVValue(kMinInt).as<std::uint64_t>(), 0u);
}

RC_GTEST_PROP(QVValue, whatWentInComesOut,
              (bool b, std::int64_t i, double d, float f, const std::string& s,
               const std::vector<float>& floats, const std::vector<std::uint8_t>& bytes,
               const std::vector<std::vector<std::string>>& nested)) {
  RC_ASSERT(QVValue(b).as<bool>() == b);
  RC_ASSERT(QVValue(i).as<std::int64_t>() == i);
  RC_ASSERT(QVValue(d).as<double>() == d);
  RC_ASSERT(QVValue(f).as<float>() == f);
  RC_ASSERT(QVValue(s).as<std::string>() == s);
  RC_ASSERT(QVValue(floats).as<std::vector<float>>() == floats);
  RC_ASSERT(QVValue(bytes).as<QVValue::Bytes>() == bytes);
  RC_ASSERT(QVValue(nested).as<std::vector<std::vector<std::string>>>() == nested);
  const ko::Clock::time_point time{ko::Duration(i)};
  RC_ASSERT(QVValue(time).as<ko::Clock::time_point>() == time);
}

TEST(QVValue, aTimeIsReadFromIntegersOnly) {
  EXPECT_EQ(errorOf([] { QVValue(1e9).as<ko::Clock::time_point>(); }),
            "QVValue::as: int expected, float given");
  EXPECT_EQ(errorOf([] { QVValue(true).as<ko::Duration>(); }),
            "QVValue::as: int expected, bool given");
}

TEST(QVValue, vectorsOfBoolAndMixedNumbersConvertElementByElement) {
  const std::vector<bool> flags{true, false};
  EXPECT_EQ(QVValue(flags), QVValue::array(true, false));
  EXPECT_EQ(QVValue::array(1, 2.5, true).as<std::vector<float>>(),
            (std::vector<float>{1.0f, 2.5f, 1.0f}));
  EXPECT_EQ(errorOf([] { QVValue::array(1, "two").as<std::vector<float>>(); }),
            "QVValue::toFloat: float expected, string given");
}

TEST(QVValue, elementsOutOfRangeAreRefused) {
  const QVValue sut = QVValue::array("a", 2);
  EXPECT_EQ(sut[1], QVValue(2));
  EXPECT_EQ(errorOf([&] { sut[2]; }), "QVValue::operator[]: no element 2 in an array of 2");
  EXPECT_EQ(errorOf([] { QVValue("text")[0]; }), "QVValue::toArray: array expected, string given");
}

TEST(QVValue, sizeCountsElementsOrBytes) {
  EXPECT_EQ(QVValue::array().getSize(), 0u);
  EXPECT_EQ(QVValue::array(1, 2, 3).getSize(), 3u);
  EXPECT_EQ(QVValue("four").getSize(), 4u);
  EXPECT_EQ(QVValue(QVValue::Bytes(5)).getSize(), 5u);
  EXPECT_EQ(QVValue(QVValue::Binary()).getSize(), 0u);
  EXPECT_EQ(errorOf([] { QVValue(1).getSize(); }),
            "QVValue::getSize: array, string or binary expected, int given");
}

TEST(QVValue, equalityLooksAtTypeAndContentNotAtTheSharedBuffer) {
  const auto values = oneOfEach();
  const auto again = oneOfEach();
  for (std::size_t i = 0; i < values.size(); ++i) {
    for (std::size_t j = 0; j < again.size(); ++j) EXPECT_EQ(values[i] == again[j], i == j);
  }
  EXPECT_NE(QVValue(1), QVValue(1.0));
  EXPECT_NE(QVValue::array(1, 2), QVValue::array(1, 3));
  EXPECT_NE(QVValue::array(kNan), QVValue::array(kNan));
}

TEST(QVValue, hasATextForm) {
  const std::pair<QVValue, const char*> cases[] = {
      {QVValue(), "invalid"},
      {false, "false"},
      {-7, "-7"},
      {2.0, "2.0"},
      {0.1f, "0.1"},
      {0.1, "0.1"},
      {1e300, "1e+300"},
      {kNan, "nan"},
      {-kInfinity, "-inf"},
      {"a \"b\" \\", R"("a \"b\" \\")"},
      {QVValue::Bytes(3), "binary of 3 bytes"},
      {QVValue::array(), "[]"},
      {QVValue::array("key", QVValue::array(1.5f, 20)), R"(["key", [1.5, 20]])"},
  };
  for (const auto& [value, text] : cases) {
    std::ostringstream stream;
    stream << value;
    EXPECT_EQ(stream.str(), text);
  }
}

TEST(QVValue, anArraysTextHasACommaAfterEachButTheLast) {
  EXPECT_EQ(QVValue::array(1, 2, 3).toText(), "[1, 2, 3]");
}

}  // namespace
}  // namespace QV
