#include "platform/middleware/internal/value_utils.h"

#include <limits>

#include "tests/support/vocabulary.h"

namespace QV::ValueUtils {
namespace {

TEST(ExtractDuration, countsSecondsAndMicrosecondsFromTheClocksStart) {
  EXPECT_EQ(extractDuration(3, 250'000, "camera").time_since_epoch(), ko::Duration(3'250'000'000));
  EXPECT_EQ(extractDuration(-1, 1, "camera").time_since_epoch(), ko::Duration(-999'999'000));
}

TEST(ExtractDuration, refusesAnInvalidTimeAndNamesItsOwner) {
  const auto errorFor = [](const QVValue& seconds, const QVValue& microseconds) {
    return errorOf([&] { extractDuration(seconds, microseconds, "camera"); });
  };
  const std::string prefix = "ValueUtils::extractDuration: camera: ";
  const std::string ints = prefix + "ints for seconds and microseconds expected, ";
  EXPECT_EQ(errorFor(1.5, 0), ints + "1.5 and 0 given");
  EXPECT_EQ(errorFor(1, "2"), ints + "1 and \"2\" given");
  EXPECT_EQ(errorFor(true, 2), ints + "true and 2 given");
  constexpr auto kMax = std::numeric_limits<std::int64_t>::max();
  const std::string range = prefix + "a time within 292 years expected, ";
  EXPECT_EQ(errorFor(9'300'000'000, 0), range + "9300000000 and 0 given");
  EXPECT_EQ(errorFor(0, kMax), range + "0 and 9223372036854775807 given");
  EXPECT_EQ(errorFor(9'223'372'036, 1'000'000), range + "9223372036 and 1000000 given");
}

}  // namespace
}  // namespace QV::ValueUtils
