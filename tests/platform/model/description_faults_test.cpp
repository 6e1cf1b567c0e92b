#include "platform/model/description_faults.h"

#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "platform/model/model_utils.h"
#include "tests/support/vocabulary.h"

namespace QV::Model {
namespace {

using testing::IsEmpty;

std::string property(const std::string& key, const std::string& value) {
  return "<property key='" + key + "' value='" + value + "'/>";
}

std::string key(const std::string& name) {
  return "<memory_key>" + name + "</memory_key>";
}

const std::string kRange = property("minimumDetectionDistance", "0.25") +
                           property("maximumDetectionDistance", "4") +
                           property("horizontalAngularRange", "0.96");

std::string sensor(const std::string& name, const std::string& type, const std::string& inside) {
  return "<sensor name='" + name + "' type='" + type + "'>" + inside + "</sensor>";
}

/** A sonar that has all that it needs, and `more`. */
std::string sonar(const std::string& name, const std::string& more = "") {
  return sensor(name, "Sonar", kRange + key(name + "/Range") + more);
}

std::string laser(const std::string& name, const std::string& more = "",
                  const std::string& stamp = "Stamp") {
  return sensor(name, "Laser",
                kRange + property("regIndex", "1") + property("setOperationMode", "Set") +
                    property("getOperationMode", "Get") +
                    property("timestamp", name + "/" + stamp) + key(name + "/X") +
                    key(name + "/Y") + more);
}

std::vector<std::string> faultsOf(const std::string& sensors, const SensorKinds& kinds) {
  const Robot robot =
      ModelUtils::robotFromXml("<robot name='r'><link name='a'/>" + sensors + "</robot>", kinds);
  std::vector<std::string> lines;
  for (const auto& fault : findDescriptionFaults(robot, kinds)) lines.push_back(fault.toText());
  return lines;
}

const std::string kAnyType =
    R"(one of "Touch" (2), "DepthCamera" (4), "Laser" (8), "Sonar" (9), "BlindZone" (14), )"
    R"("HoleLaser" (16), "Shovel" (17))";

std::vector<std::string> faultsOf(const std::string& sensors) {
  return faultsOf(sensors, SensorKinds::standard());
}

TEST(DescriptionFaults, aCorrectDescriptionHasNone) {
  std::ifstream file(QV_DESCRIPTIONS "/porter.urdf");
  const std::string porter{std::istreambuf_iterator<char>(file), {}};
  EXPECT_TRUE(findDescriptionFaults(ModelUtils::robotFromXml(porter)).empty());
  EXPECT_THAT(
      faultsOf(
          laser("A") + laser("B") +
          sonar("S", property("topic", "scan") + property("period", " 0.05 ")) +
          "<sensor name='C' type='camera'/><sensor name='D' type='contact'><contact/></sensor>"),
      IsEmpty());
}

TEST(DescriptionFaults, nameTheGivenAndTheExpectedValue) {
  const std::string bare = property("minimumDetectionDistance", "0.25") +
                           property("horizontalAngularRange", "0.96") + key("K");
  const std::vector<std::pair<std::string, std::vector<std::string>>> cases = {
      // properties
      {sensor("S", "Sonar", bare + property("maximumDetectionDistnce", "4")),
       {R"(S: property "maximumDetectionDistnce" is unknown, "maximumDetectionDistance" expected)"}},
      {sensor("S", "Sonar", bare + property("manimumDetectionDistance", "4")),
       {R"(S: property "manimumDetectionDistance" is unknown, "minimumDetectionDistance" expected)",
        R"(S: property "maximumDetectionDistance" is missing, metres from 0 to 1000 expected)"}},
      {sonar("S", property("Period", "1")),
       {R"(S: property "Period" is unknown, "period" expected)"}},
      {sensor("T", "Touch", property("colour", "red")),
       {R"(T: property "colour" is unknown, one of "horizontalAngularRange", "topic", "frame", "period", "limits" )"
        "expected"}},
      {sensor("S", "Sonar", bare),
       {R"(S: property "maximumDetectionDistance" is missing, metres from 0 to 1000 expected)"}},
      {sensor("S", "Sonar", bare + property("maximumDetectionDistance", "300 cm")),
       {R"(S: property "maximumDetectionDistance" is "300 cm", metres expected)"}},
      {sonar("S", property("period", "")), {R"(S: property "period" is "", seconds expected)"}},
      {sensor("S", "Sonar", bare + property("maximumDetectionDistance", "4000")),
       {R"(S: property "maximumDetectionDistance" is "4000", metres from 0 to 1000 expected)"}},
      {sensor("T", "Touch", property("horizontalAngularRange", "-0.1")),
       {R"(T: property "horizontalAngularRange" is "-0.1", radians from 0 to 6.28319 expected)"}},
      {sensor("S", "Sonar",
              bare.substr(bare.find("<property key='hor")) +
                  property("minimumDetectionDistance", "25 cm") +
                  property("maximumDetectionDistance", "4")),
       {R"(S: property "minimumDetectionDistance" is "25 cm", metres expected)"}},
      {sensor("S", "Sonar", bare + property("maximumDetectionDistance", "0.2")),
       {"S: minimumDetectionDistance is above maximumDetectionDistance, at most 0.2 expected"}},
      {sensor("S", "Sonar",
              bare + property("maximumDetectionDistance", "0.2") + property("Period", "1")),
       {R"(S: property "Period" is unknown, "period" expected)",
        "S: minimumDetectionDistance is above maximumDetectionDistance, at most 0.2 expected"}},
      // names
      {sonar("Laser") + laser("L"),
       {"Laser: its name is that of a family of the robot, a name of its own expected"}},
      {sensor("A", "DepthCamera", kRange + property("verticalAngularRange", "0.8")) +
           sensor("B", "DepthCamera", kRange + property("verticalAngularRange", "0.8")) +
           sensor("C", "Touch", "") + sensor("D", "Touch", ""),
       {R"(B: a second sensor of type "DepthCamera" is left out, "A" alone expected)"}},
      // numbers of keys
      {sonar("S", key("B")), {"S: 2 memory keys, 1 (range (m)) expected"}},
      {laser("L", key("L/Z")),
       {"L: 3 memory keys, 2 to 20000 in groups of 2 (x and y of each point (m)) expected"}},
      {sensor("T", "Touch", key("K")), {"T: 1 memory key, none expected"}},
      // keys of two
      {sonar("S") + sensor("Z", "BlindZone", kRange + key("S/Range")),
       {R"(Z: memory key "S/Range" is that of S too, keys of its own expected)"}},
      {laser("A") + laser("B", key("A/X") + key("A/Y")),
       {R"(B: 2 memory keys, "A/X" the first, are those of A too, keys of its own expected)"}},
      {laser("A", "", "X"), {R"(A: memory key "A/X" is there twice, keys of its own expected)"}},
      {laser("A") + sensor("S", "Sonar", kRange + key("Get")),
       {R"(S: memory key "Get" is that of A too, keys of its own expected)"}},
      // types that are nearly ours
      {"<sensor name='S' type='SONAR'/><sensor type='Sonr'/><sensor name='D' type='depth_camera'/>",
       {R"(S: type is "SONAR", "Sonar" expected)",
        R"(a sensor without a name: type is "Sonr", "Sonar" expected)",
        R"(D: type is "depth_camera", "DepthCamera" expected)"}},
      // types that are nobody's
      {sensor("N", "40", property("anything", "goes")) + sensor("L", "lidar", kRange) +
           "<sensor name='M' typ='Sonar'>" + kRange + "</sensor>",
       {"N: type is 40, " + kAnyType + " expected",
        "L: type is \"lidar\", " + kAnyType + " expected",
        "M: type is missing, " + kAnyType + " expected"}},
  };
  for (const auto& [sensors, expected] : cases) EXPECT_EQ(faultsOf(sensors), expected) << sensors;
}

TEST(DescriptionFaults, areFoundByTheGivenKinds) {
  SensorKind cliff = {40, "Cliff", "Cliff"};
  cliff.properties = {{"edge", Quantity::memoryKey, true}};
  cliff.keys = {1, 1, 1, ""};
  SensorKinds kinds;
  kinds.add(cliff);
  EXPECT_EQ(
      faultsOf(sensor("C", "Cliff", property("edge", "")) + sonar("S") + sensor("D", "clif", ""),
               kinds),
      (std::vector<std::string>{R"(C: property "edge" is "", a memory key expected)",
                                "C: 0 memory keys, 1 expected",
                                R"(S: type is "Sonar", one of "Cliff" (40) expected)",
                                R"(D: type is "clif", "Cliff" expected)"}));
}

TEST(SensorKinds, areFoundByTypeNameAndFamily) {
  const SensorKinds sut = SensorKinds::standard();
  EXPECT_EQ(sut.findType(9)->name, "Sonar");
  EXPECT_EQ(sut.findName("Sonar")->type, 9);
  EXPECT_EQ(sut.findFamily("Asus")->name, "DepthCamera");
  EXPECT_FALSE(sut.findType(99) || sut.findName("Asus") || sut.findFamily("DepthCamera"));
}

}  // namespace
}  // namespace QV::Model
