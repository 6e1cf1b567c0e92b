#include "apps/arguments.h"

#include <cmath>

#include "session/usage_error.h"
#include "tests/support/vocabulary.h"

namespace QV::app {
namespace {

TEST(Arguments, aPoseIsThreeFiniteNumbersAndNothingElse) {
  EXPECT_EQ(parsePose("-1.5,2,0.25"), Math::Pose2D(-1.5f, 2.0f, 0.25f));
  for (const char* text : {"", "1,2", "1,2,3,4", "1,2,x", "1,2,3 ", "1 ,2,3", "1,,3", "nan,0,0",
                           "1e99,0,0", "1e-50,0,0", "inf,0,0", "1,2,"}) {
    EXPECT_THAT([&] { parsePose(text); },
                ThrowsMessage<session::UsageError>(HasSubstr("--pose: x,y,theta")))
        << text;
  }
  // By way of a double it would be 1.
  EXPECT_EQ(parsePose("1.000000059604644775390625001,0,0").x, std::nextafter(1.0f, 2.0f));
  EXPECT_EQ(parsePose("450003.13,5400006.27,0.5", {450'000.0, 5'400'000.0}),
            Math::Pose2D(3.13f, 6.27f, 0.5f));
}

TEST(Arguments, aPathHasAtLeastTwoDifferentPositions) {
  EXPECT_THAT(parsePath("1,2  3,4 3,4 5,6"),
              ElementsAre(Math::Position2D(1, 2), Math::Position2D(3, 4), Math::Position2D(5, 6)));
  for (const char* text : {"", "1,2", "1,2 1,2", "1,2 3", "1,2 3,4,5"}) {
    EXPECT_THAT([&] { parsePath(text); }, ThrowsMessage<session::UsageError>(HasSubstr("--path: ")))
        << text;
  }
}

}  // namespace
}  // namespace QV::app
