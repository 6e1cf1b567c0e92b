#include "apps/arguments.h"

#include "session/usage_error.h"
#include "tests/support/vocabulary.h"

namespace QV::app {
namespace {

TEST(Arguments, aPoseIsThreeFiniteNumbersAndNothingElse) {
  EXPECT_EQ(parsePose("-1.5,2,0.25"), Math::Pose2D(-1.5f, 2.0f, 0.25f));
  for (const char* text : {"", "1,2", "1,2,3,4", "1,2,x", "1,2,3 ", "1 ,2,3", "1,,3", "nan,0,0",
                           "1e99,0,0", "inf,0,0", "1,2,"}) {
    EXPECT_THAT([&] { parsePose(text); },
                ThrowsMessage<session::UsageError>(HasSubstr("--pose: x,y,theta")))
        << text;
  }
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
