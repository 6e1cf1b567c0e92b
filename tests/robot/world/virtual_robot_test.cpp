#include "robot/world/virtual_robot.h"

#include <latch>
#include <numbers>
#include <optional>
#include <set>
#include <thread>

#include "platform/ko/simulated_time.h"
#include "platform/middleware/dcm_proxy.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "platform/middleware/qv_motion_proxy.h"
#include "platform/middleware/qv_proxy.h"
#include "platform/middleware/qv_video_device_proxy.h"
#include "platform/vision/qv_image.h"
#include "robot/services/internal/input_listener.h"
#include "tests/robot/world/room.h"
#include "tests/support/log_capture.h"
#include "tests/support/vocabulary.h"

namespace QV::robot {
namespace {

constexpr float kHalfCircle = std::numbers::pi_v<float>;
constexpr float kFree = 5.0f;
const std::string kPeople = "PeoplePerception/PeopleDetected";

/** The module that listens, and the events that it got. */
struct Listener : QVModule {
  Listener() : QVModule("QVNavigation") {
    bindMethod("hear", [this](const std::string&, const QVValue& value, const std::string&) {
      heard.push_back(value);
    });
  }
  std::vector<QVValue> heard;
};

/** Porter in a room of 10 m by 6 m; `world` may be changed before the first use of robot(). */
struct VirtualRobotTest : testing::Test {
  VirtualRobotTest() { world.start = {5.0f, 3.0f, 0.0f}; }

  VirtualRobot& robot() {
    if (!sut) {
      sut.emplace(QV_DESCRIPTIONS "/porter.urdf", map, world);
      sut->getBroker()->registerModule(listener);
    }
    return *sut;
  }
  boost::shared_ptr<QVBroker> broker() { return robot().getBroker(); }
  QVMemoryProxy memory() { return QVMemoryProxy(broker()); }

  void run(int ms) {
    robot();
    time.advance(milliseconds(ms));
  }
  float numberAt(const std::string& key) { return memory().getData(key).toFloat(); }

  /** Returns what the sonars read after a period; they run from the first call on. */
  float sonar(const std::string& side) {
    if (!sonarsRun) QVProxy(broker(), "QVSonar").callVoid("subscribe", "test");
    sonarsRun = true;
    run(100);
    return numberAt("Device/Sonar/" + side + "/Value");
  }

  void setLaserMode(const std::string& group, int mode) {
    DCMProxy devices(broker());
    devices.set(QVValue::array("Device/Laser/" + group + "/Mode/Actuator", "ClearAll",
                               QVValue::array(QVValue::array(mode, devices.getTime(0)))));
  }
  int laserMode(const std::string& group) {
    return memory().getData("Device/Laser/" + group + "/Mode/Sensor").toInt32();
  }
  /** The point that the middle ray of a laser meets, of 15. */
  Math::Position2D middlePoint(const std::string& laser) {
    const std::string point = "Device/Laser/" + laser + "/Point07/";
    return {numberAt(point + "X"), numberAt(point + "Y")};
  }

  void listenTo(const std::string& event) {
    memory().subscribeToMicroEvent(event, "QVNavigation", "", "hear");
  }
  /** Returns what the listener has heard since the last time. */
  std::vector<QVValue> heard() { return std::exchange(listener->heard, {}); }
  std::vector<std::string> heardTexts() {
    std::vector<std::string> texts;
    for (const QVValue& value : heard()) texts.push_back(value.toText());
    return texts;
  }

  ko::SimulatedTime time{ko::Clock::time_point(milliseconds(5000))};
  test::LogCapture log;
  boost::shared_ptr<OccupancyMap> map = test::makeRoom();
  WorldOptions world;
  std::optional<VirtualRobot> sut;
  boost::shared_ptr<Listener> listener = boost::make_shared<Listener>();
  bool sonarsRun = false;
};

MATCHER_P3(IsPose, x, y, theta, "") {
  return std::abs(arg.x - static_cast<float>(x)) < 2e-3f &&
         std::abs(arg.y - static_cast<float>(y)) < 2e-3f &&
         std::abs(std::remainder(arg.theta - static_cast<float>(theta), 2.0f * kHalfCircle)) <
             2e-3f;
}

TEST_F(VirtualRobotTest, followsItsCommandedVelocity) {
  world.start.theta = kHalfCircle / 2;
  robot().setVelocity(0.4f, 0.2f, 0.0f);
  run(2000);
  EXPECT_THAT(robot().getPose(), IsPose(4.6, 3.8, kHalfCircle / 2));
  EXPECT_THAT(robot().getOdometry(), IsPose(0.8, 0.4, 0));
  EXPECT_THAT(QVMotionProxy(broker()).getRobotVelocity(), ElementsAre(0.4f, 0.2f, 0.0f));
  robot().setVelocity(0.5f, 0.0f, 0.5f);
  run(static_cast<int>(2000 * kHalfCircle));
  EXPECT_THAT(robot().getPose(), IsPose(2.6, 3.8, -kHalfCircle / 2)) << "half a circle of 1 m";
  robot().setPose({1.0f, 1.5f, 0.25f});
  EXPECT_THAT(robot().getPose(), IsPose(1, 1.5, 0.25));
  EXPECT_THAT(robot().getOdometry(), IsPose(0.8, 2.4, kHalfCircle)) << "does not notice";
}

TEST_F(VirtualRobotTest, odometryDriftsByTheGivenShareAndReproducibly) {
  world.odometryDrift = 0.05f;
  robot().setVelocity(0.5f, 0.25f, 0.0f);
  run(4000);
  const Math::Pose2D driven = robot().getOdometry();
  EXPECT_THAT(robot().getPose(), IsPose(7, 4, 0));
  EXPECT_NEAR(driven.x, 2.0f, 0.4f);
  EXPECT_GT(std::abs(driven.x - 2.0f), 1e-3f);
  EXPECT_NEAR(driven.y, 0.5f * driven.x, 1e-4f) << "in all directions alike";
  sut.reset();
  listener = boost::make_shared<Listener>();
  robot().setVelocity(0.5f, 0.25f, 0.0f);
  run(4000);
  EXPECT_EQ(robot().getOdometry(), driven);
}

TEST_F(VirtualRobotTest, aWallStopsItAndPressesTheBumperOnThatSide) {
  const auto drive = [&](float velocity, int ms) {
    robot().setVelocity(velocity, 0.0f, 0.0f);
    run(ms);
  };
  listenTo("TouchChanged");
  drive(1.0f, 8000);
  EXPECT_THAT(robot().getPose(), IsPose(10.0 - 0.26, 3, 0));
  EXPECT_THAT(robot().getVelocity(), IsPose(0, 0, 0));
  EXPECT_THAT(robot().getTouchedGroups(), ElementsAre("FrontBumper"));
  EXPECT_THAT(heardTexts(), ElementsAre(R"([["FrontBumper", true, [2]]])"));
  drive(0.0f, 1000);
  EXPECT_THAT(heardTexts(), IsEmpty()) << "still leans on the wall";
  drive(-1.0f, 200);
  EXPECT_THAT(heardTexts(), ElementsAre(R"([["FrontBumper", false]])"));
  drive(-1.0f, 12000);
  EXPECT_THAT(robot().getPose(), IsPose(0.26, 3, 0));
  EXPECT_THAT(heardTexts(), ElementsAre(R"([["BackBumper", true, [2]]])"));
  EXPECT_EQ(robot().getCollisionCount(), 2u);
}

TEST_F(VirtualRobotTest, boxesAndPeopleStopItUnlessItCanPass) {
  WorldBox shelf{{7.0f, 3.0f, 0.0f}, 0.4f, 0.4f, 1.5f, 2.0f};
  world.boxes = {shelf, {{8.0f, 3.0f, 0.0f}, 0.4f, 0.4f, 0.0f, 0.05f}};
  world.people = {{{{2.0f, 3.0f}}}};
  robot().setVelocity(1.0f, 0.0f, 0.0f);
  run(6000);
  EXPECT_THAT(robot().getPose(), IsPose(7.8 - 0.26, 3, 0)) << "beneath the shelf";
  robot().setVelocity(-1.0f, 0.0f, 0.0f);
  run(8000);
  EXPECT_THAT(robot().getPose(), IsPose(2.0 + 0.2 + 0.26, 3, 0));
}

TEST_F(VirtualRobotTest, sonarsHearWhatStandsInTheirConeAtTheirHeight) {
  // Porter's sonars sit 0.65 m high.
  world.boxes = {{{7.0f, 3.4f, 0.0f}, 0.1f, 0.1f, 0.0f, 1.0f},
                 {{6.0f, 3.0f, 0.0f}, 0.1f, 0.1f, 0.0f, 0.6f}};
  world.people = {{{{3.5f, 3.0f}}}};
  EXPECT_NEAR(sonar("Front"), std::hypot(6.95 - 5.13, 0.35), 0.01) << "the pole, not the stool";
  EXPECT_NEAR(sonar("Back"), 4.87 - 3.7, 1e-3) << "the person";
}

TEST_F(VirtualRobotTest, aLaserScansFromItsConfirmedModeOnUntilItIsSwitchedOff) {
  world.start = {7.0f, 3.0f, 0.0f};
  run(1000);
  const std::string stamp = "Device/Laser/FrontLaser/Timestamp";
  const auto stampNow = [] { return ko::Clock::toInt32ms(ko::Clock::now()); };
  const float beyond = middlePoint("FrontLaser").x;
  EXPECT_GT(beyond, 5.0f) << "its maximum";
  setLaserMode("Platform", 1);
  run(40);
  EXPECT_EQ(laserMode("Platform"), 0);
  EXPECT_EQ(middlePoint("FrontLaser").x, beyond);
  run(20);
  EXPECT_EQ(laserMode("Platform"), 1);
  EXPECT_EQ(memory().getData(stamp), QVValue(stampNow()));
  EXPECT_NEAR(middlePoint("FrontLaser").x, 10.0 - 7.25, 1e-3);
  EXPECT_GT(middlePoint("LeftLaser").x, 5.0f) << "has another bit";
  setLaserMode("Platform", 2);
  run(100);
  const QVValue last = memory().getData(stamp);
  run(1000);
  EXPECT_EQ(memory().getData(stamp), last);
  EXPECT_NEAR(middlePoint("LeftLaser").x, 6.0 - 3.25, 1e-3);
}

TEST_F(VirtualRobotTest, reportsThePeopleItSeesWhileSomebodyListens) {
  // Three people: in front of the robot, behind it, and hidden by a cupboard.
  world.people = {{{{7.09f, 3.5f}}}, {{{3.0f, 3.0f}}}, {{{8.0f, 2.5f}}}};
  world.boxes = {{{7.0f, 2.7f, 0.0f}, 0.1f, 0.6f, 0.0f, 2.0f}};
  run(1000);
  EXPECT_FALSE(memory().getData(kPeople).isValid()) << "declared, though nobody was seen";
  listenTo(kPeople);
  run(200);
  const auto events = heard();
  ASSERT_EQ(events.size(), 1u);
  const QVValue& event = events[0];
  // The camera is 1.1 m high and 0.09 m before the root, heads are at 1.6 m.
  const double distance = std::sqrt(2.0 * 2.0 + 0.5 * 0.5 + 0.5 * 0.5);
  ASSERT_EQ(event.getSize(), 5u);
  EXPECT_EQ(event[0].toText(), "[6, 200000]");
  ASSERT_EQ(event[1].getSize(), 1u);
  EXPECT_EQ(event[1][0][0], QVValue(0));
  EXPECT_NEAR(event[1][0][1].toFloat(), distance, 1e-3);
  EXPECT_NEAR(event[1][0][2].toFloat(), -std::asin(0.5 / distance), 1e-3) << "looking up";
  EXPECT_NEAR(event[1][0][3].toFloat(), std::atan2(0.5, 2.0), 1e-3);
  EXPECT_EQ(event[4], QVValue(kDepthCamera));
  robot().setPose({5.0f, 3.0f, kHalfCircle / 2});
  run(1000);
  EXPECT_THAT(heard(), testing::SizeIs(1)) << "once that nobody is there any longer";
}

TEST_F(VirtualRobotTest, peopleWalkToAndFroAndWaitForTheRobot) {
  world.people = {{{{2.0f, 1.0f}, {4.0f, 1.0f}}, 1.0f}, {{{7.0f, 3.0f}, {3.0f, 3.0f}}, 1.0f}};
  run(2500);
  EXPECT_NEAR(robot().getPeople()[0].x, 3.5f, 0.05f);
  EXPECT_NEAR(robot().getPeople()[1].x, 5.0f + 0.26f + 0.2f + 0.3f, 0.05f);
  EXPECT_THAT(robot().getTouchedGroups(), IsEmpty());
}

TEST_F(VirtualRobotTest, timeGoesOnWherePositionsAreHalfAMetreApart) {
  map = boost::make_shared<OccupancyMap>(
      test::makeWalledMap(202, 122, 0.05f, {500'000.0f, 4'500'000.0f, 0.0f}));
  world.start = {500'005.0f, 4'500'003.0f, 0.0f};
  world.randomPeople = 3;
  const auto before = ko::Clock::now();
  run(1000);
  EXPECT_EQ(ko::Clock::now() - before, milliseconds(1000));
}

TEST_F(VirtualRobotTest, theDepthCameraShowsTheWallAhead) {
  const auto depthAhead = [this] {
    QVVideoDeviceProxy video(broker());
    EXPECT_EQ(video.getCameraName(kDepthCamera), "camera");
    const std::string handle =
        video.subscribeCamera("test", kDepthCamera, k320x240Resolution, kDepthColorSpace, 10);
    const auto image = QVImage::fromQVValue(video.getImageRemote(handle));
    return reinterpret_cast<const std::uint16_t*>(image->getPixels())[120 * 320 + 160];
  };
  EXPECT_NEAR(depthAhead(), 10000 - 5090, 1);
  robot().setFault("DepthCamera", FaultKind::wrong);
  EXPECT_NEAR(depthAhead(), 0.6f * (10000 - 5090), 1);
  sut.reset();
  world.dropOuts = 1.0f;
  EXPECT_EQ(depthAhead(), 0);
}

/** The inputs that a robot's listener got. */
struct Inputs : InputListener {
  void onWrite(const std::string& key, const QVValue&, bool) override { keys.insert(key); }
  void onImage(int camera, const QVValue&) override { cameras.push_back(camera); }
  void onStep(const BodyStep& step) override { poses.push_back(step.pose); }

  std::set<std::string> keys;
  std::vector<int> cameras;
  std::vector<Math::Pose2D> poses;
};

TEST_F(VirtualRobotTest, aListenerGetsThePresentStateAndThenAllInputs) {
  Inputs inputs;
  run(100);
  InputTap::set(robot(), &inputs);
  EXPECT_THAT(inputs.keys, Contains("Device/Sonar/Front/Value"));
  EXPECT_THAT(inputs.poses, ElementsAre(IsPose(5, 3, 0)));
  robot().setVelocity(1.0f, 0.0f, 0.0f);
  run(20);
  QVVideoDeviceProxy video(broker());
  video.getImageRemote(
      video.subscribeCamera("test", kDepthCamera, k320x240Resolution, kDepthColorSpace, 10));
  InputTap::set(robot(), nullptr);
  run(20);
  EXPECT_THAT(inputs.poses, ElementsAre(IsPose(5, 3, 0), IsPose(5.02, 3, 0)));
  EXPECT_THAT(inputs.cameras, ElementsAre(kDepthCamera));
}

TEST_F(VirtualRobotTest, aSeedMakesARunTheSameAndAnotherOneMakesItDiffer) {
  world.start = {7.0f, 3.0f, 0.0f};
  world.rangeNoise = 0.02f;
  world.randomPeople = 2;
  // A run's last readings of all families of ranges.
  const auto readings = [this](std::uint64_t seed) {
    sut.reset();
    listener = boost::make_shared<Listener>();
    sonarsRun = false;
    world.seed = seed;
    setLaserMode("Platform", 7);
    run(3000);
    std::vector<float> result{sonar("Front"), sonar("Front")};
    for (const char* laser : {"FrontLaser", "LeftLaser"}) result.push_back(middlePoint(laser).x);
    for (const auto& person : robot().getPeople()) result.push_back(person.x);
    return result;
  };
  const auto first = readings(1);
  EXPECT_EQ(readings(1), first);
  const auto other = readings(2);
  for (std::size_t i = 0; i < first.size(); ++i) EXPECT_NE(other[i], first[i]) << i;
  EXPECT_NE(first[0], first[1]) << "noise is drawn for each measurement";
  EXPECT_NEAR(first[0], 2.87, 0.1);
}

TEST_F(VirtualRobotTest, aDropOutHasNoEcho) {
  world.start = {7.0f, 3.0f, 0.0f};
  world.dropOuts = 1.0f;
  EXPECT_EQ(sonar("Front"), kFree);
}

TEST_F(VirtualRobotTest, theFaultSetLastCountsAmongOverlappingOnes) {
  world.start = {7.0f, 3.0f, 0.0f};
  EXPECT_EQ(sonar("Back"), kFree) << "nothing within its 4 m";
  const float sound = sonar("Front");
  robot().setFault("FrontSonar", FaultKind::stuck);
  robot().setFault("FrontSonar", FaultKind::wrong, ko::Duration::zero(), milliseconds(1000));
  EXPECT_NEAR(sonar("Front"), 0.6f * sound, 1e-3);
  robot().setPose({6.0f, 3.0f, 0.0f});
  run(1000);
  EXPECT_EQ(sonar("Front"), sound) << "the first one again";
}

TEST_F(VirtualRobotTest, lasersShareBothModeAndActuatorOrNeither) {
  const auto laser = [](const std::string& name, const std::string& mode,
                        const std::string& actuator) {
    return "<sensor name='" + name + "' type='8'><property key='regIndex' value='1'/>" +
           "<property key='getOperationMode' value='" + mode +
           "'/><property key='setOperationMode' value='" + actuator +
           "'/><property key='timestamp' value='t'/></sensor>";
  };
  const auto errorFor = [&](const std::string& lasers) {
    const RobotDescription description("<robot name='r'><link name='base'/>" + lasers + "</robot>");
    return errorOf([&] { VirtualRobot(description, map); });
  };
  EXPECT_THAT(errorFor(laser("L", "mode", "A") + laser("R", "mode", "B")),
              HasSubstr(R"(laser "R": setOperationMode "A" expected)"));
  EXPECT_THAT(errorFor(laser("L", "one", "A") + laser("R", "two", "A")),
              HasSubstr(R"(laser "R": getOperationMode "one" expected)"));
}

TEST_F(VirtualRobotTest, refusesInvalidWorldOptions) {
  const auto errorWith = [&](auto change) {
    WorldOptions options;
    change(options);
    return errorOf([&] { VirtualRobot(QV_DESCRIPTIONS "/porter.urdf", map, options); });
  };
  EXPECT_THAT(errorWith([](auto& o) { o.start.x = NAN; }), HasSubstr("a finite start"));
  EXPECT_THAT(errorWith([](auto& o) { o.dropOuts = 1.5f; }), HasSubstr("drop-outs from 0 to 1"));
  EXPECT_THAT(errorWith([](auto& o) { o.wallHeight = 0.0f; }), HasSubstr("a wall height above 0"));
  EXPECT_THAT(errorWith([](auto& o) { o.boxes = {{{}, 0.0f}}; }), HasSubstr("box"));
  EXPECT_THAT(errorWith([](auto& o) { o.people = {{}}; }), HasSubstr("walker"));
  EXPECT_THAT(errorWith([](auto& o) { o.people = {{{{1.0f, NAN}}}}; }), HasSubstr("walker"));
  EXPECT_THAT(errorWith([](auto& o) { o.stepPeriod = {}; }), HasSubstr("periods above 0"));
  EXPECT_THAT(errorOf([&] { VirtualRobot("/no/such.urdf", map); }), HasSubstr("/no/such.urdf"));
  EXPECT_THAT(errorOf([&] { robot().setVelocity(NAN, 0, 0); }), HasSubstr("velocity"));
  EXPECT_THAT(errorOf([&] { VirtualRobot(QV_DESCRIPTIONS "/porter.urdf", map, {}, broker()); }),
              HasSubstr("has a module \"VirtualRobot\" already"));
}

TEST_F(VirtualRobotTest, itsServicesMayOutliveItAndItsBodyThenStops) {
  const auto services = broker();
  robot().setVelocity(1.0f, 0.0f, 0.0f);
  sonar("Front");
  sut.reset();
  time.advance(milliseconds(1000));
  const QVProxy body(services, "VirtualRobot");
  EXPECT_THAT(body.call<std::vector<float>>("getPose"), ElementsAre(5.1f, 3.0f, 0.0f));
  QVProxy(services, "QVSonar").callVoid("unsubscribe", "test");
}

TEST_F(VirtualRobotTest, commandsAndQuestionsAreThreadSafe) {
  world.randomPeople = 1;
  robot().setVelocity(0.3f, 0.0f, 0.3f);
  std::latch started(3);
  std::atomic<bool> done{false};
  const auto meddle = [&] {
    started.arrive_and_wait();
    while (!done) {
      robot().setVelocity(0.3f, 0.0f, 0.3f);
      robot().setFault("FrontSonar", FaultKind::stuck);
      robot().setJointPositions({{"LElbowRoll", -0.5}});
      robot().clearFault("FrontSonar");
      robot().getPose();
      robot().getPeople();
      robot().getTouchedGroups();
    }
  };
  std::thread first(meddle);
  std::thread second(meddle);
  started.arrive_and_wait();
  sonar("Front");
  run(2000);
  done = true;
  first.join();
  second.join();
  EXPECT_GT(robot().getOdometry().theta, 0.1f);
}

}  // namespace
}  // namespace QV::robot
