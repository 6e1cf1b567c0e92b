#include "robot/world/faults/fault.h"

#include "robot/world/virtual_robot.h"
#include "tests/robot/world/room.h"
#include "tests/support/vocabulary.h"

namespace QV::robot {
namespace {

TEST(Fault, parsesAFaultFromText) {
  EXPECT_EQ(parseFault("FrontSonar:off"), (Fault{"FrontSonar", FaultKind::off}));
  EXPECT_EQ(
      parseFault("Sonar/Front:intermittent@0.125-20"),
      (Fault{"Sonar/Front", FaultKind::intermittent, milliseconds(125), milliseconds(20000)}));
}

TEST(Fault, aMalformedFaultIsRefusedWithTheExpectedForm) {
  for (const char* text : {"", "FrontSonar", ":off"}) {
    EXPECT_THAT(errorOf([&] { parseFault(text); }), HasSubstr("NAME:KIND or NAME:KIND@FROM-TO"))
        << text;
  }
  EXPECT_EQ(errorOf([] { parseFault("A:broken"); }),
            "fault: off, stuck, garbage, wrong, slow, delayed or intermittent expected, "
            "\"broken\" given");
  for (const char* text : {"A:off@", "A:off@1", "A:off@2-1", "A:off@1-1", "A:off@-1-2", "A:off@a-2",
                           "A:off@0-1e30", "A:off@0-2s"}) {
    EXPECT_THAT(errorOf([&] { parseFault(text); }),
                HasSubstr("FROM-TO (seconds, FROM below TO) expected"))
        << text;
  }
}

TEST(Fault, aFaultThatTheRobotCantHaveIsRefused) {
  VirtualRobot robot(QV_DESCRIPTIONS "/porter.urdf", test::makeRoom(), {{5.0f, 3.0f, 0.0f}});
  EXPECT_EQ(errorOf([&] { robot.setFault("FrontBumper", FaultKind::slow); }),
            "fault: one of off, stuck, garbage, wrong, delayed, intermittent expected for "
            "\"FrontBumper\", \"slow\" given");
  EXPECT_THAT(errorOf([&] { robot.setFault("Nose", FaultKind::off); }),
              AllOf(HasSubstr("no sensor \"Nose\""), HasSubstr("FrontSonar"),
                    HasSubstr("PeoplePerception")));
  EXPECT_THAT(errorOf([&] { robot.clearFault("Nose"); }), HasSubstr("Nose"));
  EXPECT_THAT(errorOf([&] {
                robot.setFault("FrontSonar", FaultKind::off, milliseconds(2), milliseconds(1));
              }),
              HasSubstr("before the end"));
}

}  // namespace
}  // namespace QV::robot
