#include <iostream>
#include <string>

#include "cliff_robot.h"
#include "outlets/picture/session_picture.h"
#include "outlets/web/page_state.h"
#include "sensor/real/real_sensor_manager.h"
#include "session/open.h"
#include "session/sensor_check.h"

using namespace QV;

namespace {

const Math::Pose2D kAtTheHole(3.5f, 6.3f, 0.0f);

std::string tell(const session::Snapshot& snapshot) {
  const session::SensorState& cliff = snapshot.sensors.at(0);
  if (cliff.records.empty()) return "no record";
  return cliff.marks.hits.empty() ? "floor" : "a cliff";
}

/** Returns what a page draws of the sensor: its points' x and y in the map. */
std::string toldToPage(const session::Snapshot& snapshot) {
  const std::string page = outlets::pageStateOf(snapshot);
  const std::size_t means = page.find("\"means\"", page.find("FrontCliff"));
  return page.substr(means, page.find(']', means) + 1 - means);
}

/**
 * Returns what the sensor reports 0.24 s after the robot was put at the hole, and 0.5 s later.
 */
std::string tryFault(session::Session& robot, robot::FaultKind kind) {
  robot.clearFault("FrontCliff");
  robot.setPose(kOnTheFloor);
  robot.run(boost::chrono::seconds(2));
  robot.setFault({"FrontCliff", kind});
  robot.run(boost::chrono::milliseconds(40));
  robot.setPose(kAtTheHole);
  robot.run(boost::chrono::milliseconds(240));
  const std::string soon = tell(robot.look());
  robot.run(boost::chrono::milliseconds(500));
  return soon + ", then " + tell(robot.look());
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc != 3) return 2;
  const auto robot = session::openVirtual(argv[1], cliffRobot());
  robot->subscribe("my navigation", {"Cliff"});
  robot->run(boost::chrono::seconds(1));
  for (const auto& sensor : robot->look().sensors)
    std::cout << sensor.name << " of " << sensor.family << ": " << tell(robot->look()) << '\n';

  robot->setPose(kAtTheHole);
  robot->run(boost::chrono::seconds(1));
  outlets::SessionPicture picture(argv[2]);
  picture.show(robot->look());
  picture.finish();
  std::cout << "at the hole: " << tell(robot->look()) << '\n';
  std::cout << "the page is told: " << toldToPage(robot->look()) << '\n';

  for (const auto kind : robot->getPossibleFaults("FrontCliff"))
    std::cout << getName(kind) << ": " << tryFault(*robot, kind) << '\n';
  robot->clearFault("FrontCliff");
  robot->setPose(kAtTheHole);
  for (const auto& sensor : session::checkSensors(*robot))
    std::cout << "check: " << sensor.name << ' ' << getName(sensor.verdict) << '\n';

  const sensor::RealSensorManager alone(robot->getBroker(), cliffRobot().sensors);
  for (const auto& name : alone.getSensorList()) std::cout << "without a session: " << name << '\n';
}
