/**
 * Descriptions of any bytes, and a sound one that is damaged: what is read hangs together and has
 * its mistakes told, what is refused has a reason.
 */
#include <algorithm>
#include <array>
#include <stdexcept>

#include "fuzz/damaged_text.h"
#include "fuzz/quiet_run.h"
#include "fuzz/value_decoder.h"
#include "platform/model/description_faults.h"
#include "platform/model/model_utils.h"

namespace QV::fuzz {
namespace {

constexpr char kSound[] = R"(<?xml version="1.0"?>
<robot name="r"><kind code="1"/><body link="b"/>
<link name="a"><collision name="c"><origin xyz="0 0 1" rpy="0 1 0"/>
<geometry><box size="1 2 3"/></geometry></collision></link>
<link name="b"><collision><geometry><capsule radius="1" length="2"/></geometry></collision></link>
<link name="d"/>
<joint name="j" type="revolute"><parent link="a"/><child link="b"/><axis xyz="0 0 1"/>
<limit lower="-1" upper="1" effort="1" velocity="1"/></joint>
<joint name="k" type="fixed"><parent link="b"/><child link="d"/></joint>
<sensor name="s" type="Sonar"><parent link="d"/><origin xyz="0 0 1"/>
<property key="minimumDetectionDistance" value="0.3"/><property key="maximumDetectionDistance" value="4"/>
<memory_keys pattern="D/{i:02}/{X,Y}" count="3"/><memory_key>V</memory_key></sensor>
<sensor name="l" type="8"><property key="regIndex" value="1"/></sensor>
<!-- end --></robot>)";

constexpr std::array<std::string_view, 40> kOthers = {
    "",      "0",       "-1",     "1e39",     "nan",    "1e-39",    "32",         "100000000",
    "a",     "b",       "d",      "link",     "joint",  "sensor",   "collision",  "geometry",
    "Sonar", "Laser",   "8",      "fixed",    "planar", "floating", "continuous", "sphere",
    "mesh",  "mimic",   "{i:02}", "{X,Y,Z}",  "{",      "}",        "<",          "/>",
    ">",     "<link/>", "\"",     "</robot>", "&#0;",   "<!--",     "]]>",        "regIndex"};

bool isLink(const Model::Robot& robot, const std::string& name) {
  return std::ranges::find(robot.links, name) != robot.links.end();
}

void checkRobot(const Model::Robot& robot) {
  check(isLink(robot, robot.rootLink) && isLink(robot, robot.bodyLink), "no such link");
  check(robot.joints.size() + 1 == robot.links.size(), "not a tree");
  for (const Model::JointConfig& joint : robot.joints)
    check(isLink(robot, joint.parentLink) && isLink(robot, joint.childLink), "a loose joint");
  for (const Model::DescriptionFault& fault :
       findDescriptionFaults(robot, Model::SensorKinds::standard()))
    check(!fault.toText().empty(), "a mistake without a text");
}

/** 1 byte says whether it is bytes as they are, or which damage is done to a sound one. */
std::string descriptionOf(std::span<const std::uint8_t> bytes) {
  if (bytes.empty()) return {};
  const auto rest = bytes.subspan(1);
  static const SoundText sound(kSound, kOthers);
  if (bytes[0] % 4 > 1) return sound.changed(rest);
  return damaged(bytes[0] % 4 == 0 ? "" : kSound, rest.data(), rest.size());
}

void read(const std::uint8_t* data, std::size_t size) {
  const std::string xml = descriptionOf({data, size});
  Model::Robot robot;
  try {
    robot = Model::ModelUtils::robotFromXml(xml, Model::SensorKinds::standard());
  } catch (const std::runtime_error& error) {
    check(std::string(error.what()).starts_with("robot description"), "an error of another kind");
    return;
  }
  checkRobot(robot);
}

}  // namespace
}  // namespace QV::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return QV::fuzz::runQuietly(QV::fuzz::read, data, size);
}
