#include "platform/model/model_utils.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "tests/support/vocabulary.h"

namespace QV::Model {
namespace {

using testing::Key;
using testing::Pair;

// The joints stand children first, the sensors before their links.
const char* const kDescription = R"(<?xml version="1.0"?>
<robot name="two arms" xmlns:tool="http://example.org/tool">
  <kind code="7"/>
  <body link="torso"/>
  <sensor name="Front" type="9">
    <parent link="head"/>
    <origin xyz="0.1 0 -0.2" rpy="0 0 1.5707963"/>
    <property key="minimumDetectionDistance" value="0.25 m"/>
    <property key="label" value=""/>
    <memory_key> Sonar/Front </memory_key>
    <memory_key>Sonar/Front/Age</memory_key>
  </sensor>
  <sensor name="Skin" type="2"/>
  <sensor name="another tool's" update_rate="20"><camera/></sensor>
  <sensor name="Back" type="Sonar"/>
  <sensor name="another tool's" type="ray"><memory_key/></sensor>
  <sensor type="sonar"/>
  <joint name="grip" type="prismatic">
    <parent link="hand"/><child link="finger"/>
    <axis xyz="0 0 2"/><limit lower="0" upper="0.04" effort="10" velocity="0.2"/>
    <mimic joint="wrist" multiplier="2" offset="0.5"/>
  </joint>
  <joint name="wrist" type="continuous">
    <parent link="arm"/><child link="hand"/>
    <mimic joint="elbow" multiplier="-3" offset="0.25"/>
  </joint>
  <joint name="elbow" type="revolute">
    <parent link="torso"/><child link="arm"/><origin xyz="1 2 3"/>
    <axis xyz="0 1 0"/><limit lower="-1" upper="1" effort="1" velocity="1"/>
  </joint>
  <joint name="neck" type="planar"><parent link="torso"/><child link="head"/></joint>
  <joint name="stand" type="fixed">
    <parent link="base"/><child link="torso"/><axis xyz="0 0 0"/>
  </joint>
  <link name="base"><collision><geometry><mesh filename="base.stl"/></geometry></collision></link>
  <link name="torso">
    <visual><geometry><sphere radius="many"/></geometry></visual>
    <collision><geometry><tool:blob/></geometry></collision>
    <collision name="chest">
      <origin xyz="0 0 1"/><geometry><capsule radius="0.2" length="0.5"/></geometry>
    </collision>
    <collision name=""><geometry><box size="1 2 3"/></geometry></collision>
  </link>
  <link name="arm"><collision><geometry><cylinder radius="0" length="0"/></geometry></collision></link>
  <link name="hand"/><link name="finger"/><link name="head"/>
  <transmission name="t"><joint name="nobody's"/></transmission>
  <gazebo><sensor name="s" type="9"/></gazebo>
</robot>)";

TEST(RobotFromXml, readsTheRobotItsBodyAndItsJointsParentsFirst) {
  const Robot robot = ModelUtils::robotFromXml(kDescription);
  EXPECT_EQ(robot.name, "two arms");
  EXPECT_EQ(robot.kindCode, 7);
  EXPECT_EQ(robot.rootLink, "base");
  EXPECT_EQ(robot.bodyLink, "torso");
  EXPECT_THAT(robot.links, ElementsAre("base", "torso", "arm", "hand", "finger", "head"));

  const auto name = [](const JointConfig& joint) { return joint.name; };
  std::vector<std::string> names;
  std::transform(robot.joints.begin(), robot.joints.end(), std::back_inserter(names), name);
  EXPECT_THAT(names, ElementsAre("stand", "elbow", "neck", "wrist", "grip"));
  const JointConfig& elbow = robot.joints[1];
  EXPECT_EQ(elbow.origin, Math::Transform::fromPosition({1, 2, 3}));
  EXPECT_EQ(elbow.limits, (JointLimits{-1, 1, 1, 1}));
  EXPECT_EQ(elbow.mimic, std::nullopt);
  EXPECT_EQ(robot.joints[2].type, JointType::planar);
  EXPECT_EQ(robot.joints[3].axis, Math::Position3D(1, 0, 0));
  EXPECT_EQ(robot.joints[3].limits, std::nullopt);
  const JointConfig& grip = robot.joints[4];
  EXPECT_EQ(grip.axis, Math::Position3D(0, 0, 1));
  // Twice (-3 times the elbow plus 0.25) plus 0.5.
  EXPECT_EQ(grip.mimic, (JointMimic{"elbow", -6.0f, 1.0f}));
}

TEST(RobotFromXml, skipsSensorsOfOtherTools) {
  const Robot robot = ModelUtils::robotFromXml(kDescription);
  ASSERT_THAT(robot.sensorConfigs, ElementsAre(Key("Back"), Key("Front"), Key("Skin")));
  const SensorConfig& front = robot.sensorConfigs.at("Front");
  EXPECT_EQ(front.name, "Front");
  EXPECT_EQ(front.type, 9);
  EXPECT_EQ(front.parentLink, "head");
  EXPECT_EQ(position3DFromTransform(front.origin), Math::Position3D(0.1f, 0, -0.2f));
  EXPECT_NEAR(front.origin(1, 0), 1.0f, 1e-6f);
  EXPECT_THAT(front.properties,
              ElementsAre(Pair("label", ""), Pair("minimumDetectionDistance", "0.25 m")));
  EXPECT_THAT(front.memoryKeys, ElementsAre("Sonar/Front", "Sonar/Front/Age"));
  EXPECT_EQ(robot.sensorConfigs.at("Skin"), (SensorConfig{"Skin", "torso", 2, {}, {}, {}}));
  EXPECT_EQ(robot.sensorConfigs.at("Back").type, 9);
  EXPECT_THAT(robot.foreignSensors, ElementsAre(ForeignSensor{"another tool's", "ray", true},
                                                ForeignSensor{"", "sonar"}));
}

TEST(RobotFromXml, acceptsTheTypeNamesOfTheGivenKinds) {
  SensorKinds kinds;
  kinds.add({40, "ray", "Cliff"});
  const Robot robot = ModelUtils::robotFromXml(
      "<robot name='r'><link name='a'/><sensor name='s' type='ray'/></robot>", kinds);
  EXPECT_EQ(robot.sensorConfigs.at("s").type, 40);
}

TEST(RobotFromXml, keepsEveryShapeUnderItsJointEvenUnsupportedOnes) {
  const Robot robot = ModelUtils::robotFromXml(kDescription);
  ASSERT_THAT(robot.collisionShapes, ElementsAre(Key("arm#0"), Key("base#0"), Key("chest"),
                                                 Key("torso#0"), Key("torso#2")));
  const auto shape = [&](const char* name) { return robot.collisionShapes.at(name)->getShape(); };
  EXPECT_EQ(shape("arm#0"), Math::Shape3D(Math::Cylinder{}));
  EXPECT_EQ(shape("base#0"), Math::Shape3D(Math::UnsupportedShape{"mesh"}));
  EXPECT_EQ(shape("chest"), Math::Shape3D(Math::Capsule{0.2f, 0.5f}));
  EXPECT_EQ(shape("torso#0"), Math::Shape3D(Math::UnsupportedShape{"tool:blob"}));
  EXPECT_EQ(shape("torso#2"), Math::Shape3D(Math::Box{{1, 2, 3}}));
  EXPECT_EQ(robot.collisionShapes.at("base#0")->getParentJoint(), "");
  const CollisionShape& chest = *robot.collisionShapes.at("chest");
  EXPECT_EQ(chest.getName(), "chest");
  EXPECT_EQ(chest.getParentJoint(), "stand");
  EXPECT_EQ(chest.getTransform(), Math::Transform::fromPosition({0, 0, 1}));
}

std::string joint(const std::string& name, const std::string& parent, const std::string& child,
                  const std::string& inside = "", const std::string& type = "continuous") {
  return "<joint name='" + name + "' type='" + type + "'><parent link='" + parent +
         "'/><child link='" + child + "'/>" + inside + "</joint>\n";
}

std::string collision(const std::string& inside) {
  return "<link name='c'><collision>" + inside + "</collision></link>" + joint("jc", "a", "c");
}

std::string sensor(const std::string& inside) {
  return "<sensor name='s' type='9'>\n" + inside + "</sensor>";
}

/** A robot of a link "a" on line 2 that carries "b" by the joint "ab" on line 3; `more` on line 4.
 */
std::string robotWith(const std::string& more) {
  return "<robot name='r'>\n<link name='a'/><link name='b'/>\n" + joint("ab", "a", "b") + more +
         "</robot>";
}

TEST(RobotFromXml, saysWhereADescriptionIsMalformedAndWhatWasExpected) {
  const std::string limit = "<limit effort='1' velocity='1'";
  const std::pair<std::string, const char*> cases[] = {
      {"", "line 1: well-formed XML expected"},
      {"<robot name='r'>\n<link name='a'>\n</robot>", "line 2: well-formed XML expected"},
      {"<?xml version='1.0'?>", "line 1: <robot> expected"},
      {"\n<sdf/>", "line 2, <sdf>: <robot> expected"},
      {robotWith("") + "<robot/>", "line 4, <robot>: nothing after </robot> expected"},
      {"<robot name='r'/>", "line 1, <robot>: a <link> expected"},
      {robotWith("<link name=''/>"), "attribute name: a text expected, \"\" given"},
      {robotWith("<link name='a' name='c'/>"), "line 4: well-formed XML expected"},
      {robotWith("<link name='b'/>"), "line 4, <link>: a name of its own expected, another link"},
      {robotWith("<link name='c'/>"), "one root expected, \"a\" and \"c\" both hang on no joint"},
      {robotWith("<kind code='one'/>"), "line 4, <kind>: attribute code: an integer expected"},
      {robotWith("<kind code='1'/>\n<kind code='1'/>"), "line 5, <kind>: one in <robot> expected"},
      {robotWith("<body link='c'/>"), "line 4, <body>: a link of this robot expected, there is no"},
      // joints
      {robotWith(joint("ab", "a", "b")), "line 4, <joint>: a name of its own expected"},
      {robotWith(joint("x", "a", "b")), "\"b\" hangs on \"ab\""},
      {robotWith(joint("x", "c", "b")), "line 4, <parent>: a link of this robot expected"},
      {robotWith("<joint name='x' type='fixed'>\n<parent link='a'/></joint>"),
       "line 4, <joint>: a <child> expected, it has none"},
      {robotWith(joint("x", "a", "b", "", "ball")), "planar or floating expected, \"ball\" given"},
      {robotWith(joint("x", "a", "b", "", "revolute")), "<joint>: a <limit> expected"},
      {robotWith(joint("x", "a", "b", "<limit velocity='1'/>", "revolute")),
       "<limit>: an attribute effort expected"},
      {robotWith(joint("x", "a", "b", limit + " lower='1'/>")), "lower is above upper: 1.0"},
      {robotWith(joint("x", "a", "b", limit + " upper='nan'/>")), "a number expected, \"nan\""},
      {robotWith(joint("x", "a", "b", "<axis xyz='0 0 0'/>")),
       "<axis>: attribute xyz: a direction"},
      {robotWith(joint("x", "a", "b", "\n<origin xyz='1 2'/>")),
       "line 5, <origin>: attribute xyz: 3 numbers expected, \"1 2\" given"},
      {robotWith(joint("x", "a", "b", "<origin rpy='1 2 1e39'/>")), "3 numbers expected"},
      {robotWith("<link name='c'/>" + joint("cc", "c", "c")), "\"cc\" is part of a loop"},
      {"<robot name='r'>" + joint("ab", "a", "b") + joint("ba", "b", "a") +
           "<link name='a'/><link name='b'/></robot>",
       "is part of a loop"},
      {robotWith(joint("x", "a", "b", "<mimic joint='nobody'/>")), "\"nobody\" is none"},
      {robotWith(joint("x", "a", "b", "<mimic joint='x'/>")), "none within 16 steps"},
      {robotWith(joint("x", "a", "b", "<mimic joint='ab'/>", "fixed")), "others cannot mimic"},
      // shapes
      {robotWith(collision("")), "line 4, <collision>: a <geometry> expected"},
      {robotWith(collision("<geometry><box size='1 1 1'/><box size='1 1 1'/></geometry>")),
       "<geometry>: one shape expected"},
      {robotWith(collision("<geometry><sphere radius='-1'/></geometry>")),
       "<sphere>: attribute radius: a number of at least 0 expected, \"-1\" given"},
      {robotWith(collision("<geometry><cylinder radius='1'/></geometry>")),
       "<cylinder>: an attribute length expected"},
      {robotWith(collision("<geometry><capsule radius='1' length='1 m'/></geometry>")),
       "<capsule>: attribute length: a number expected, \"1 m\" given"},
      {robotWith(collision("<geometry><box size='1 -1 1'/></geometry>")), "<box>: attribute size"},
      {robotWith(collision("<geometry><mesh/></geometry></collision>\n<collision name='c#0'>"
                           "<geometry><mesh/></geometry>")),
       "line 5, <collision>: a name of its own expected"},
      // sensors
      {robotWith("<sensor name='s' type=''/>"),
       "<sensor>: attribute type: an integer or the name of a kind"},
      {robotWith("<sensor name='s' type='9 '/>"), "the name of a kind expected, \"9 \" given"},
      {robotWith(sensor("") + "\n" + sensor("")), "line 6, <sensor>: a name of its own expected"},
      {robotWith(sensor("<parent link='c'/>")), "line 5, <parent>: a link of this robot"},
      {robotWith(sensor("<origin/>\n<origin/>")), "line 6, <origin>: one in <sensor> expected"},
      {robotWith(sensor("<property key='k'/>")), "<property>: an attribute value expected"},
      {robotWith(sensor("<property key='k' value=''/>\n<property key='k' value=''/>")),
       "line 6, <property>: a key of its own expected, \"k\" is there twice"},
      {robotWith(sensor("<memory_key> </memory_key>")), "<memory_key>: a memory key as its text"},
      {robotWith(sensor("<memorykey>k</memorykey>")), "<memorykey>: <property>, <memory_key>,"},
  };
  for (const auto& c : cases) {
    EXPECT_THAT(errorOf([&] { ModelUtils::robotFromXml(c.first); }), HasSubstr(c.second))
        << c.first;
  }
}

TEST(RobotFromXml, refusesDeepOrLargeXmlWithoutCrashing) {
  std::string nested;
  for (int i = 0; i < 200'000; ++i) nested += "<a>";
  EXPECT_THAT(errorOf([&] { ModelUtils::robotFromXml("<robot name='r'>" + nested); }),
              HasSubstr("DEPTH_EXCEEDED"));
  EXPECT_THAT(errorOf([] { ModelUtils::robotFromXml(std::string(17 << 20, ' ')); }),
              HasSubstr("at most 16777216 bytes expected, 17825792 given"));
  std::string attributes;
  for (int i = 0; i < 30'000; ++i) attributes += " a" + std::to_string(i) + "='>\n'";
  EXPECT_THAT(errorOf([&] {
                ModelUtils::robotFromXml("<robot name='r'>\n<!-- '<a --><link" + attributes);
              }),
              HasSubstr("line 102: at most 100 attributes in an element expected, more given"));
}

TEST(RobotFromXml, aRobotHasTenThousandLinksShapesAndSensorsAtMost) {
  const std::size_t most = 10'000;
  std::string parent = "root";
  std::string chain = "<link name='root'/>";
  std::string sensors = "<link name='root'/>";
  const std::string shape = "<collision><geometry><sphere radius='1'/></geometry></collision>";
  std::string shapes = "<link name='root'>";
  for (std::size_t i = 1; i <= most; ++i) {
    const std::string name = std::to_string(i);
    if (i < most) chain += "<link name='" + name + "'/>" + joint(name, parent, name);
    if (i < most) parent = name;
    sensors += "<sensor name='" + name + "' type='9'/>";
    shapes += shape;
  }
  const auto read = [](const std::string& parts) {
    return ModelUtils::robotFromXml("<robot name='r'>" + parts + "</robot>");
  };
  const Robot robot = read(chain);
  ASSERT_EQ(robot.joints.size(), most - 1);
  EXPECT_EQ(robot.joints.back().childLink, parent);
  EXPECT_EQ(read(sensors).sensorConfigs.size(), most);
  EXPECT_EQ(read(shapes + "</link>").collisionShapes.size(), most);
  const std::string tooMany = ">: at most 10000 expected, more given";
  EXPECT_THAT(errorOf([&] { read(chain + "<link name='more'/>"); }), HasSubstr("<link" + tooMany));
  EXPECT_THAT(errorOf([&] { read(sensors + "<sensor name='more' type='9'/>"); }),
              HasSubstr("<sensor" + tooMany));
  EXPECT_THAT(errorOf([&] { read(shapes + shape + "</link>"); }),
              HasSubstr("<collision" + tooMany));
}

}  // namespace
}  // namespace QV::Model
