#pragma once

#include <memory>
#include <string>

#include <boost/make_shared.hpp>

#include "platform/middleware/qv_memory_proxy.h"
#include "platform/middleware/qv_proxy.h"
#include "platform/model/internal/number_text.h"
#include "robot/world/virtual_robot.h"
#include "session/shared_files.h"
#include "tests/support/walled_map.h"

namespace QV::test {

/** A free square of 6 m within walls, in cells so large that its rays cost little. */
inline boost::shared_ptr<OccupancyMap> makeCoarseRoom() {
  return boost::make_shared<OccupancyMap>(
      makeWalledMap(14, 14, 0.5f, Math::Pose2D(-0.5f, -0.5f, 0.0f)));
}

/**
 * The project's own robot in a room, its back to a wall and a person 2 m ahead, over the
 * broker that is given. 200 ms after it leans back, every sensor has something to report.
 */
class Porter {
 public:
  explicit Porter(const boost::shared_ptr<QVBroker>& broker,
                  robot::RobotDescription given = describe())
      : description(std::move(given)),
        broker(broker),
        robot(description, makeCoarseRoom(), options(), broker) {}

  void leanBack() { robot.setVelocity(-0.5f, 0.0f, 0.0f); }

  static robot::RobotDescription describe() {
    return robot::RobotDescription::fromFile(session::findSharedFile("descriptions/porter.urdf"));
  }

  bool isLaser(const std::string& sensor) const { return property(sensor, "regIndex") != nullptr; }

  /** True if the operation mode has the laser's bit. */
  bool isLaserOn(const std::string& laser) const {
    const int mode = QVMemoryProxy(broker).getData(*property(laser, "getOperationMode")).toInt32();
    return (mode & static_cast<int>(Model::atofC(*property(laser, "regIndex")))) != 0;
  }
  std::vector<std::string> cameraHandles() const {
    return QVProxy(broker, "QVVideoDevice").call<std::vector<std::string>>("getHandles");
  }

 private:
  static robot::WorldOptions options() {
    robot::WorldOptions options;
    options.stepPeriod = boost::chrono::milliseconds(100);
    options.start = {0.3f, 3.0f, 0.0f};
    options.people = {{{{2.3f, 3.0f}}}};
    return options;
  }

  const std::string* property(const std::string& sensor, const std::string& key) const {
    const auto config = description.model.sensorConfigs.find(sensor);
    if (config == description.model.sensorConfigs.end()) return nullptr;
    const auto found = config->second.properties.find(key);
    return found == config->second.properties.end() ? nullptr : &found->second;
  }

  const robot::RobotDescription description;
  const boost::shared_ptr<QVBroker> broker;

 public:
  robot::VirtualRobot robot;
};

}  // namespace QV::test
