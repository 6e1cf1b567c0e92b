#include "platform/middleware/internal/value_utils.h"

#include "platform/middleware/qv_error.h"

namespace QV::ValueUtils {
namespace {

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr std::int64_t kMicrosecond = 1'000;

bool addNanoseconds(std::int64_t count, std::int64_t unit, std::int64_t& sum) {
  std::int64_t nanoseconds = 0;
  return !__builtin_mul_overflow(count, unit, &nanoseconds) &&
         !__builtin_add_overflow(sum, nanoseconds, &sum);
}

}  // namespace

ko::Clock::time_point extractDuration(const QVValue& seconds, const QVValue& microseconds,
                                      const std::string& name) {
  const auto refuse = [&](const std::string& expected) {
    throw QVError("ValueUtils", "extractDuration",
                  name + ": " + expected + " expected, " + seconds.toText() + " and " +
                      microseconds.toText() + " given");
  };
  if (!seconds.isInt() || !microseconds.isInt()) refuse("ints for seconds and microseconds");
  std::int64_t sum = 0;
  if (!addNanoseconds(seconds.toInt(), kSecond, sum) ||
      !addNanoseconds(microseconds.toInt(), kMicrosecond, sum)) {
    refuse("a time within 292 years");
  }
  return ko::Clock::time_point(ko::Duration(sum));
}

}  // namespace QV::ValueUtils
