#include <numbers>

#include "platform/ko/simulated_time.h"
#include "robot/world/units/unit_rig.h"
#include "tests/robot/world/room.h"
#include "tests/support/vocabulary.h"

namespace QV::robot {
namespace {

constexpr float kHalfTurn = std::numbers::pi_v<float>;

std::string sensor(const std::string& name, const std::string& type, const std::string& inside) {
  return "<sensor name='" + name + "' type='" + type + "'>" + inside + "</sensor>";
}

std::string property(const std::string& key, const std::string& value) {
  return "<property key='" + key + "' value='" + value + "'/>";
}

std::string rangeProperties(const char* maximum, const char* aperture) {
  return property("minimumDetectionDistance", "0.1") +
         property("maximumDetectionDistance", maximum) +
         property("horizontalAngularRange", aperture);
}

/** 5 cm above the floor, `pitch` down; its one ray writes "x" and "y". */
std::string laser(const std::string& name, const std::string& type, const std::string& pitch) {
  return sensor(name, type,
                "<origin xyz='0 0 0.05' rpy='0 " + pitch + " 0'/>" + rangeProperties("5", "1") +
                    property("regIndex", "2") + property("setOperationMode", "actuator") +
                    property("getOperationMode", "mode") + property("timestamp", "time") +
                    property("inclination", "error") + property("status", "status") +
                    "<memory_key>x</memory_key><memory_key>y</memory_key>");
}

std::string blindZone() {
  return sensor("BlindZone", "BlindZone",
                "<origin xyz='0.2 0 0.3'/>" + rangeProperties("0.5", "0.8") +
                    "<memory_key>zone</memory_key>");
}

std::string bumper(const std::string& side, const std::string& heading) {
  return "<link name='" + side + "'/><joint name='" + side +
         "Joint' type='fixed'><parent link='base'/><child link='" + side + "'/></joint>" +
         sensor(side + "Touch", "Touch",
                "<parent link='" + side + "'/><origin rpy='0 0 " + heading + "'/>" +
                    property("horizontalAngularRange", "1"));
}

/** The units of a robot that nobody drives, in the room of 10 m by 6 m. */
struct Units {
  Units(const std::string& sensors, const WorldOptions& world)
      : rig(RobotDescription("<robot name='r'><link name='base'/>" + sensors + "</robot>"),
            test::makeRoom(), world) {}

  /** Lasers are switched on. */
  void measureAt(const Moment& moment) {
    context.getSurroundings().setMoment(moment);
    for (const auto& unit : units) {
      if (unit->getName() == "lasers") context.write("mode", 2);
      unit->measure(ko::Clock::now());
    }
  }

  const ko::SimulatedTime time{ko::Clock::time_point(milliseconds(5000))};
  const UnitRig rig;
  const UnitContext& context = rig.getContext();
  const UnitFactory::Units units = rig.make();
};

struct Measured {
  const char* what;
  std::string sensor;
  Moment moment;
  const char* key;
  float expected;
};

TEST(Units, measureWhatStandsAroundTheRobot) {
  constexpr float kHole = 1, kSound = 2, kStep = 4, kNoEcho = 6;
  WorldOptions world;
  world.boxes = {{{7.0f, 3.0f, 0.0f}, 0.1f, 1.0f, 0.0f, 0.1f},
                 {{7.5f, 3.0f, 0.0f}, 0.1f, 1.0f, 0.8f, 0.9f}};
  world.holes = {{{2.0f, 2.0f, 0.0f}, 0.4f, 2.0f, 1.0f}, {{2.0f, 4.5f, 0.0f}, 0.4f, 2.0f, 0.05f}};
  const std::string level = laser("Laser", "Shovel", "0");
  // Meets the floor 16 cm ahead.
  const std::string down = laser("HoleLaser", "HoleLaser", "0.3");
  const std::vector<Measured> cases{
      {"a low box", level, {{6.0f, 3.0f, 0.0f}}, "x", 0.95f},
      {"the wall past it", level, {{6.0f, 4.0f, 0.0f}}, "x", 4.0f},
      {"nothing within 5 m", level, {{4.5f, 4.0f, 0.0f}}, "x", kNoEcho},
      {"a person", level, {{6.0f, 4.0f, 0.0f}, {{7.0f, 4.0f}}}, "x", 0.8f},
      {"the floor", down, {{5.0f, 3.0f, 0.0f}}, "status", kSound},
      {"a wall", down, {{9.9f, 3.0f, 0.0f}}, "status", kSound},
      {"a hole", down, {{1.65f, 2.0f, 0.0f}}, "status", kHole},
      {"a step down", down, {{1.65f, 4.5f, 0.0f}}, "status", kStep},
      {"a free zone", blindZone(), {{5.0f, 3.0f, 0.0f}}, "zone", 0.0f},
      {"over a box, beneath another", blindZone(), {{6.7f, 3.0f, 0.0f}}, "zone", 0.0f},
      {"a wall in the zone", blindZone(), {{9.5f, 3.0f, 0.0f}}, "zone", 1.0f},
      {"a wall behind it", blindZone(), {{0.3f, 3.0f, 0.0f}}, "zone", 0.0f},
      {"somebody at its edge", blindZone(), {{5.0f, 3.0f, 0.0f}, {{5.5f, 3.3f}}}, "zone", 1.0f},
  };
  for (const Measured& is : cases) {
    Units sut(is.sensor, world);
    sut.measureAt(is.moment);
    EXPECT_NEAR(sut.context.read(is.key).toFloat(), is.expected, 2e-3) << is.what;
  }
}

TEST(Units, aContactPressesTheBumpersInWhoseApertureItIsElseTheNearest) {
  Units sut(bumper("Front", "0") + bumper("Left", "0.8") + bumper("Back", "3.14159"), {});
  const auto touchedAt = [&sut](std::optional<float> contact) {
    sut.measureAt({{}, {}, contact});
    return sut.context.getSurroundings().getTouched();
  };
  EXPECT_THAT(touchedAt(0.4f), ElementsAre("Front", "Left"));
  EXPECT_THAT(touchedAt(-0.4f), ElementsAre("Front"));
  EXPECT_THAT(touchedAt(-kHalfTurn), ElementsAre("Back"));
  EXPECT_THAT(touchedAt(-1.5f), ElementsAre("Front")) << "no bumper covers it";
  EXPECT_THAT(touchedAt(-2.2f), ElementsAre("Back")) << "nearer, past half a turn";
  EXPECT_THAT(touchedAt(std::nullopt), IsEmpty());
}

TEST(Ray, ofASensorGoesAlongTheXAxisOfItsFrame) {
  const Math::Transform frame = Math::Transform::fromPosition({1.0f, 2.0f, 3.0f}) *
                                Math::rotationFrom3DRotation(0.1f, 0.3f, 0.7f);
  const Math::Position3D end = Ray::ahead(frame).at(2.0f);
  const Math::Position3D expected = frame * Math::Position3D(2.0f, 0.0f, 0.0f);
  EXPECT_NEAR(norm(Math::Position3D(end.x - expected.x, end.y - expected.y, end.z - expected.z)),
              0.0f, 1e-6f);
}

}  // namespace
}  // namespace QV::robot
