#include "robot/services/internal/motion_service.h"

#include <array>
#include <atomic>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <thread>
#include <vector>

#include "platform/ko/simulated_time.h"
#include "platform/middleware/qv_broker.h"
#include "platform/middleware/qv_motion_proxy.h"
#include "platform/model/model_utils.h"
#include "tests/support/real_data.h"
#include "tests/support/vocabulary.h"

namespace QV::robot {
namespace {

using Math::Transform;

constexpr float kPi = std::numbers::pi_v<float>;

// A mast that turns and lifts an arm; a finger follows the elbow; a sonar is called like a link.
const char* const kDescription = R"(<robot name="r">
  <body link="torso"/>
  <link name="base"/><link name="torso"/><link name="arm"/><link name="hand"/>
  <link name="finger"/><link name="shadow"/>
  <joint name="mast" type="prismatic"><parent link="base"/><child link="torso"/>
    <origin xyz="0 0 0.5"/><axis xyz="0 0 1"/>
    <limit lower="0" upper="1" effort="1" velocity="1"/></joint>
  <joint name="shoulder" type="continuous"><parent link="torso"/><child link="arm"/>
    <origin xyz="0.1 0.2 0.3" rpy="0.4 0.5 0.6"/><axis xyz="1 2 3"/></joint>
  <joint name="elbow" type="revolute"><parent link="arm"/><child link="hand"/>
    <origin xyz="0.3 0 0"/><axis xyz="0 0 1"/>
    <limit lower="-3" upper="3" effort="1" velocity="1"/></joint>
  <joint name="claw" type="continuous"><parent link="hand"/><child link="finger"/>
    <origin xyz="0.1 0 0"/><axis xyz="0 1 0"/><mimic joint="elbow" multiplier="-2" offset="0.1"/>
  </joint>
  <joint name="hand" type="floating"><parent link="torso"/><child link="shadow"/>
    <origin xyz="0 0 9"/></joint>
  <sensor name="Sonar" type="9"><parent link="torso"/>
    <origin xyz="0.1 0 0" rpy="0 0 1.5707963"/></sensor>
  <sensor name="arm" type="9"><parent link="base"/><origin xyz="7 0 0"/></sensor>
</robot>)";

void expectNear(const Transform& actual, const Transform& expected, const std::string& what = "") {
  for (std::size_t i = 0; i < expected.values.size(); ++i) {
    EXPECT_NEAR(actual.values[i], expected.values[i], 2e-6f) << what << ", element " << i;
  }
}

Transform at(float x, float y, float z) {
  return Transform::fromPosition({x, y, z});
}

// Returns the turn, computed by a quaternion.
Transform turnAbout(const Math::Position3D& axis, double angle) {
  const double s = std::sin(angle / 2);
  const double w = std::cos(angle / 2);
  const double x = axis.x * s;
  const double y = axis.y * s;
  const double z = axis.z * s;
  const std::array<double, 12> values{
      1 - 2 * (y * y + z * z), 2 * (x * y - z * w),     2 * (x * z + y * w),     0,
      2 * (x * y + z * w),     1 - 2 * (x * x + z * z), 2 * (y * z - x * w),     0,
      2 * (x * z - y * w),     2 * (y * z + x * w),     1 - 2 * (x * x + y * y), 0};
  return Transform(std::vector<float>(values.begin(), values.end()));
}

using Positions = std::map<std::string, double>;

/** Every link in the root's frame, as the product of what the description says of its joints. */
std::map<std::string, Transform> placeLinks(const Model::Robot& robot, const Positions& positions) {
  std::map<std::string, Transform> placed{{robot.rootLink, Transform()}};
  for (const Model::JointConfig& joint : robot.joints) {
    const bool follows = joint.mimic.has_value();
    double position = 0.0;
    if (hasPosition(joint.type)) position = positions.at(follows ? joint.mimic->joint : joint.name);
    if (follows) position = joint.mimic->multiplier * position + joint.mimic->offset;
    const auto along = static_cast<float>(position);
    const Transform moved =
        joint.type == Model::JointType::prismatic
            ? at(joint.axis.x * along, joint.axis.y * along, joint.axis.z * along)
            : turnAbout(joint.axis, position);
    placed[joint.childLink] = placed.at(joint.parentLink) * joint.origin * moved;
  }
  return placed;
}

Positions randomPositions(const Model::Robot& robot, std::mt19937& random) {
  Positions positions;
  for (const Model::JointConfig& joint : robot.joints) {
    if (!hasPosition(joint.type) || joint.mimic) continue;
    positions[joint.name] = std::uniform_real_distribution<double>(-3, 3)(random);
  }
  return positions;
}

void expectEveryJointWhereTheDescriptionPutsIt(const Model::Robot& robot) {
  std::mt19937 random(5);
  MotionService sut(robot);
  const Transform rootInGround = at(1, 2, 3) * Math::rotationFrom3DRotation(0.1f, 0.2f, 0.3f);
  sut.setGroundPose(rootInGround);
  for (int i = 0; i < 20; ++i) {
    const Positions positions = randomPositions(robot, random);
    sut.setJointPositions(positions);
    const std::map<std::string, Transform> links = placeLinks(robot, positions);
    const Transform rootInBody = inverse(links.at(robot.bodyLink));
    for (const Model::JointConfig& joint : robot.joints) {
      const Transform& inRoot = links.at(joint.childLink);
      expectNear(sut.getTransform(joint.name, 0, true), rootInBody * inRoot, joint.name);
      expectNear(sut.getTransform(joint.name, 1, true), rootInGround * inRoot, joint.name);
    }
  }
}

TEST(MotionService, placesJointsOfEveryType) {
  expectEveryJointWhereTheDescriptionPutsIt(Model::ModelUtils::robotFromXml(kDescription));
}

TEST(MotionService, placesEveryJointOfRealRobots) {
  for (const char* file : {"reachy.urdf", "turtlebot3_waffle.urdf", "panda_collision.urdf"}) {
    const auto xml = test::readRealData(std::string("urdf/") + file);
    if (!xml) GTEST_SKIP() << "no " << file << " in QV_DATA";
    SCOPED_TRACE(file);
    expectEveryJointWhereTheDescriptionPutsIt(Model::ModelUtils::robotFromXml(*xml));
  }
}

struct MotionServiceTest : testing::Test {
  MotionServiceTest() { broker->registerModule(sut); }

  Transform ask(const std::string& name, int frame, bool measured = true) {
    return Transform(QVMotionProxy(broker).getTransform(name, frame, measured));
  }
  Transform askAt(const std::string& name, int ms) {
    return Transform(QVMotionProxy(broker).call<std::vector<float>>(
        "_getSensorTransformAtTime", name, ko::Clock::time_point(milliseconds(ms))));
  }
  float heightAt(int ms) { return askAt("torso", ms)(2, 3); }
  void setMast(double height) { sut->setJointPositions({{"mast", height}}); }

  ko::SimulatedTime time{ko::Clock::time_point(milliseconds(10'000))};
  boost::shared_ptr<QVBroker> broker = QVBroker::create();
  boost::shared_ptr<MotionService> sut =
      boost::make_shared<MotionService>(Model::ModelUtils::robotFromXml(kDescription));
};

TEST_F(MotionServiceTest, namesAreSensorsThenJointsThenLinks) {
  expectNear(ask("Sonar", 0), at(0.1f, 0, 0) * Math::rotationFrom3DRotation(0, 0, kPi / 2));
  expectNear(ask("arm", 1), at(7, 0, 0), "the sensor, not the link");
  expectNear(ask("hand", 0), at(0, 0, 9), "the joint, not the link");
  expectNear(ask("base", 0), at(0, 0, -0.5f));
  EXPECT_EQ(errorOf([&] { ask("head", 0); }),
            "QVMotion::getTransform: no sensor, joint or link is called \"head\"");
  EXPECT_EQ(errorOf([&] { ask("Sonar", 2); }),
            "QVMotion::getTransform: frame 0 (the body) or 1 (the ground) expected, 2 given");
  EXPECT_THAT(errorOf([&] { askAt("head", 10'000); }), HasSubstr("is called \"head\""));
}

TEST_F(MotionServiceTest, theGroundFrameStaysOnTheFloorWhileTheBodyFrameMoves) {
  setMast(0.25);
  expectNear(ask("torso", 0), Transform());
  expectNear(ask("torso", 1), at(0, 0, 0.75f));
  sut->setGroundPose(at(0, 0, 0.1f));
  expectNear(ask("torso", 1), at(0, 0, 0.85f));
  expectNear(ask("base", 0), at(0, 0, -0.75f));
}

TEST_F(MotionServiceTest, commandedPositionsAreUsedOnlyIfMeasuredOnesAreNotRequested) {
  sut->setJointPositions({{"mast", 0.2}, {"elbow", 1.0}});
  sut->setJointCommands({{"mast", 0.4}});
  EXPECT_FLOAT_EQ(ask("torso", 1, true)(2, 3), 0.7f);
  EXPECT_FLOAT_EQ(ask("torso", 1, false)(2, 3), 0.9f);
  setMast(0.3);
  EXPECT_FLOAT_EQ(ask("torso", 1, false)(2, 3), 0.9f);
  expectNear(ask("elbow", 0, false), ask("elbow", 0, true), "it was given no command");
}

TEST_F(MotionServiceTest, posturesAreInterpolatedBetweenMeasurements) {
  EXPECT_FLOAT_EQ(heightAt(10'000), 0.5f);
  setMast(0.1);
  time.advance(milliseconds(100));
  setMast(0.3);
  time.advance(milliseconds(50));
  EXPECT_FLOAT_EQ(heightAt(10'000), 0.6f);
  EXPECT_FLOAT_EQ(heightAt(10'025), 0.65f);
  EXPECT_FLOAT_EQ(heightAt(10'100), 0.8f);
  EXPECT_FLOAT_EQ(heightAt(10'150), 0.8f);
  EXPECT_FLOAT_EQ(heightAt(10'250), 0.8f) << "a little ahead of now";
  EXPECT_FLOAT_EQ(heightAt(9'000), 0.6f);
  sut->setGroundPose(at(0, 0, 1) * Math::rotationFrom3DRotation(0, 0.4f, 0));
  expectNear(askAt("base", 10'125), at(0, 0, 0.5f) * Math::rotationFrom3DRotation(0, 0.2f, 0));
}

TEST_F(MotionServiceTest, aSecondMeasurementAtOneTimeReplacesTheFirst) {
  setMast(0.1);
  sut->setJointPositions({{"elbow", 1.0}});
  setMast(0.2);
  time.advance(milliseconds(10));
  setMast(0.4);
  EXPECT_FLOAT_EQ(heightAt(10'000), 0.7f);
  EXPECT_FLOAT_EQ(heightAt(10'005), 0.8f);
  EXPECT_NE(ask("elbow", 0), ask("shoulder", 0) * at(0.3f, 0, 0));
}

TEST_F(MotionServiceTest, aTimeThatIsNotCoveredIsAnErrorThatSaysWhichTimesAre) {
  EXPECT_EQ(errorOf([&] { heightAt(8'999); }),
            "QVMotion::_getSensorTransformAtTime: no posture is known at 8.999000 s, only from "
            "9.000000 s to 10.000000 s");
  EXPECT_THAT(errorOf([&] { heightAt(10'101); }), HasSubstr("no posture is known at 10.101000 s"));

  for (int i = 0; i <= 30; ++i) {
    setMast(i * 0.01);
    time.advance(milliseconds(100));
  }
  // The newest measurement is of 13 s: the last one at least a second older is kept, none before.
  EXPECT_FLOAT_EQ(heightAt(12'000), 0.7f);
  EXPECT_THAT(errorOf([&] { heightAt(11'999); }),
              HasSubstr("only from 12.000000 s to 13.100000 s"));
}

TEST_F(MotionServiceTest, anInvalidPostureIsRefusedAndChangesNothing) {
  setMast(0.2);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(errorOf([&] {
              sut->setJointPositions({{"mast", 0.9}, {"neck", 0.1}});
            }),
            "no joint that moves by itself is called \"neck\"");
  EXPECT_THAT(errorOf([&] { sut->setJointPositions({{"claw", 0.1}}); }), HasSubstr("\"claw\""));
  EXPECT_THAT(errorOf([&] { sut->setJointCommands({{"hand", 0.1}}); }), HasSubstr("\"hand\""));
  EXPECT_EQ(errorOf([&] {
              sut->setJointPositions({{"elbow", 0.9}, {"mast", nan}});
            }),
            "the position of joint \"mast\" is not finite");
  EXPECT_EQ(errorOf([&] { sut->setGroundPose(at(0, 0, INFINITY)); }),
            "the ground pose is not finite");
  EXPECT_EQ(errorOf([&] { sut->setRobotVelocity({0, NAN, 0}); }), "the velocity is not finite");
  EXPECT_FLOAT_EQ(ask("torso", 1)(2, 3), 0.7f);
  expectNear(ask("elbow", 0), ask("shoulder", 0) * at(0.3f, 0, 0));
}

// Each second joint turns back what the first one turned, so every whole posture points ahead.
TEST(MotionServiceThreads, eachAnswerIsOfOnePosture) {
  std::string xml = "<robot name='r'><link name='0'/>";
  for (int i = 1; i <= 40; ++i) {
    const std::string name = std::to_string(i);
    xml += "<link name='" + name + "'/><joint name='" + name +
           "' type='continuous'><parent link='" + std::to_string(i - 1) + "'/><child link='" +
           name + "'/></joint>";
  }
  MotionService sut(Model::ModelUtils::robotFromXml(xml + "</robot>"));
  const auto turnTo = [&](double angle) {
    Positions positions;
    for (int i = 1; i <= 40; ++i) positions[std::to_string(i)] = i % 2 == 0 ? angle : -angle;
    sut.setJointPositions(positions);
  };
  std::atomic<int> reading{2};
  std::atomic<int> crooked{0};
  const auto read = [&] {
    for (int i = 0; i < 20'000; ++i) {
      const Transform now = sut.getTransform("40", 0, true);
      const Transform past = sut.getTransformAtTime("40", ko::Clock::now());
      if (std::abs(now(1, 2)) > 1e-5f || std::abs(past(1, 2)) > 1e-5f) ++crooked;
    }
    --reading;
  };
  std::thread first(read);
  std::thread second(read);
  for (int i = 0; reading > 0; ++i) turnTo(i * 0.1);
  first.join();
  second.join();
  EXPECT_EQ(crooked, 0);
}

}  // namespace
}  // namespace QV::robot
