#include <cmath>
#include <map>
#include <stdexcept>

#include "platform/ko/simulated_time.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "platform/model/sensor_kinds.h"
#include "robot/world/chance/range_noise.h"
#include "robot/world/units/unit_factory.h"
#include "robot/world/virtual_robot.h"
#include "tests/robot/world/room.h"
#include "tests/support/log_capture.h"
#include "tests/support/vocabulary.h"

namespace QV::robot {
namespace {

constexpr int kCliffType = 40;

/** Looks along its x axis for the floor, and writes the range. */
class CliffUnit : public SensorUnit {
 public:
  CliffUnit(const Model::SensorConfig& config, const UnitContext& context)
      : SensorUnit(config.name, milliseconds(50)),
        key(config.memoryKeys.at(0)),
        context(context),
        noise(context.getOptions(), config.name),
        channel(
            context.getFaults(config.name), [](float) { return -1.0f; },
            [](float range) { return kFalseShare * range; }) {}

  void measure(ko::Clock::time_point now) override {
    const Surroundings& around = context.getSurroundings();
    const Moment moment = around.getMoment();
    const Ray ray = Ray::ahead(around.frameInMap(getName(), moment));
    if (!around.getMap().findOccupancy({ray.origin.x, ray.origin.y})) {
      throw std::runtime_error("outside the map");
    }
    const auto sample = channel.pass(noise.apply(around.castRay(ray, 5.0f, moment)), now);
    if (!sample) return context.withdraw(key);
    context.write(key, sample->value);
    context.write("measurements", ++count);
  }

 private:
  const std::string key;
  const UnitContext context;
  RangeNoise noise;
  FaultChannel<float> channel;
  int count = 0;
};

Model::SensorKinds kindsWithCliff() {
  Model::SensorKinds kinds = Model::SensorKinds::standard();
  Model::SensorKind cliff{kCliffType, "Cliff", "Cliff", Model::PointMeaning::zone};
  cliff.keys = {1, 1, 1, "range of the floor (m)"};
  kinds.add(cliff);
  return kinds;
}

UnitFactory unitsWithCliff() {
  UnitFactory units = UnitFactory::standard();
  units.add(kCliffType, [](const auto& config, const auto& context) {
    return std::make_unique<CliffUnit>(config, context);
  });
  return units;
}

/** A robot whose cliff detector hangs 0.3 m above the floor and before it, and looks down. */
const char* const kDescription = R"(<robot name='r'><link name='base'/>
  <sensor name='FrontCliff' type='Cliff'>
    <origin xyz='0.4 0 0.3' rpy='0 1.57079633 0'/><memory_key>cliff</memory_key></sensor>
  <sensor name='Zone' type='BlindZone'>
    <property key='maximumDetectionDistance' value='1'/><memory_key>zone</memory_key></sensor>
</robot>)";

struct OwnUnitTest : testing::Test {
  OwnUnitTest() {
    world.start = {5.0f, 3.0f, 0.0f};
    world.holes = {{{7.0f, 3.0f, 0.0f}, 1.0f, 1.0f, 0.5f}};
  }

  VirtualRobot make(const UnitFactory& units = unitsWithCliff(),
                    const Model::SensorKinds& kinds = kindsWithCliff()) {
    return VirtualRobot(RobotDescription(kDescription, kinds), test::makeRoom(), world, broker,
                        units);
  }
  void run(int ms) { time.advance(milliseconds(ms)); }
  QVValue at(const std::string& key) { return QVMemoryProxy(broker).getData(key); }

  ko::SimulatedTime time{ko::Clock::time_point(milliseconds(5000))};
  test::LogCapture log;
  WorldOptions world;
  const boost::shared_ptr<QVBroker> broker = QVBroker::create();
};

TEST_F(OwnUnitTest, measuresOncePerPeriodAtTheRobotsPose) {
  VirtualRobot robot = make();
  run(1000);
  EXPECT_NEAR(at("cliff").toFloat(), 0.3f, 1e-3);
  const int before = at("measurements").toInt32();
  run(1000);
  EXPECT_EQ(at("measurements").toInt32() - before, 20) << "each 50 ms, in steps of 20";
  robot.setPose({6.3f, 3.0f, 0.0f});
  run(100);
  EXPECT_NEAR(at("cliff").toFloat(), 0.8f, 1e-3) << "the bottom of the hole";
}

TEST_F(OwnUnitTest, hasTheSevenFaultsExceptThoseItsKindExcludes) {
  VirtualRobot robot = make();
  const std::map<FaultKind, float> expected{
      {FaultKind::stuck, 0.3f},       {FaultKind::garbage, -1.0f}, {FaultKind::wrong, 0.48f},
      {FaultKind::slow, 0.3f},        {FaultKind::delayed, 0.3f},  {FaultKind::off, 0.0f},
      {FaultKind::intermittent, 0.0f}};
  EXPECT_THAT(robot.getPossibleFaults("FrontCliff"), SizeIs(expected.size()));
  for (const auto& [kind, range] : expected) {
    robot.clearFault("FrontCliff");
    robot.setPose({5.0f, 3.0f, 0.0f});
    run(1000);
    robot.setFault("FrontCliff", kind);
    run(20);
    robot.setPose({6.3f, 3.0f, 0.0f});
    run(180);
    // A key without a number is what a sensor leaves that is gone.
    const QVValue answer = at("cliff");
    EXPECT_NEAR(answer.isValid() ? answer.toFloat() : 0.0f, range, 1e-3) << getName(kind);
    run(300);
  }
}

TEST_F(OwnUnitTest, aThrowingUnitIsLoggedOnceAndTheOthersGoOn) {
  VirtualRobot robot = make();
  robot.setPose({9.8f, 3.0f, 0.0f});
  run(500);
  EXPECT_THAT(log.lines(), ElementsAre("error VirtualRobot.measure: FrontCliff: outside the map"));
  EXPECT_EQ(at("zone"), QVValue(1.0f));
  EXPECT_EQ(at("measurements"), QVValue(1));
  robot.setPose({5.0f, 3.0f, 0.0f});
  run(100);
  EXPECT_NE(at("measurements"), QVValue(1)) << "measures again";
}

TEST_F(OwnUnitTest, anInconsistentSetupIsRefusedWithoutSideEffects) {
  UnitFactory units = unitsWithCliff();
  const auto nothing = [](const auto&, const auto&) { return std::unique_ptr<SensorUnit>(); };
  EXPECT_EQ(errorOf([&] { units.add(kCliffType, nothing); }),
            "UnitFactory: one creator expected for type 40");
  EXPECT_THAT(errorOf([&] { units.add(41, {}); }), HasSubstr("a creator expected for type 41"));
  units.add(42, [](const auto&, const auto&) -> std::unique_ptr<SensorUnit> {
    throw std::runtime_error("no cliff");
  });
  Model::SensorKinds kinds = Model::SensorKinds::standard();
  kinds.add({42, "Cliff", "Cliff"});
  EXPECT_EQ(errorOf([&] { make(units, kinds); }), "no cliff");
  EXPECT_FALSE(broker->isModulePresent("QVMemory"));
  EXPECT_EQ(make(units).getBroker(), broker);
}

TEST_F(OwnUnitTest, aSensorNeedsAKindButNoUnit) {
  const RobotDescription standard(R"(<robot name='r'><link name='base'/>
    <sensor name='FrontCliff' type='40'><memory_key>cliff</memory_key></sensor></robot>)");
  EXPECT_EQ(
      errorOf([&] { VirtualRobot(standard, test::makeRoom(), world, broker, unitsWithCliff()); }),
      "VirtualRobot: sensor \"FrontCliff\": a type of the description's kinds expected, 40 "
      "given");
  EXPECT_THAT(make(UnitFactory::standard()).getFaultySensors(), ElementsAre("Zone"));
}

}  // namespace
}  // namespace QV::robot
