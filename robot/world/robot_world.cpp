#include "robot/world/robot_world.h"

#include <cmath>
#include <stdexcept>

#include "robot/services/robot_model_service.h"
#include "robot/services/sensor_types.h"
#include "robot/services/sonar_driver.h"
#include "robot/services/video_device.h"
#include "robot/world/body_size.h"
#include "robot/world/sonar_units.h"

namespace QV::robot {
namespace {

typedef std::lock_guard<std::mutex> Lock;

Math::Pose2D finite(const char* what, const Math::Pose2D& value) {
  if (std::isfinite(value.x + value.y + value.theta)) return value;
  throw std::invalid_argument(std::string("EmbeddedRobot: a finite ") + what + " expected");
}

UnitContext makeContext(boost::shared_ptr<const OccupancyMap> map, const WorldOptions& options,
                        const boost::shared_ptr<MotionService>& motion,
                        const boost::shared_ptr<FaultPlan>& faults,
                        const boost::shared_ptr<QVBroker>& broker) {
  return {boost::make_shared<Surroundings>(std::move(map), options, motion), faults,
          boost::make_shared<MemoryService>(broker), options};
}

}  // namespace

RobotWorld::RobotWorld(const RobotDescription& description,
                       boost::shared_ptr<const OccupancyMap> map, const WorldOptions& options,
                       const boost::shared_ptr<QVBroker>& broker)
    : QVModule("EmbeddedRobot"),
      model(description.model),
      motion(boost::make_shared<MotionService>(model)),
      devices(boost::make_shared<DeviceManager>(broker)),
      faults(boost::make_shared<FaultPlan>(model, ko::Clock::now())),
      context(makeContext(std::move(map), options, motion, faults, broker)),
      body(context.surroundings->getScene(), measureBody(model, *motion),
           finite("start", options.start)) {
  bindMethod("setVelocity", [this](float vx, float vy, float omega) {
    setVelocity({vx, vy, omega});
  });
  bindMethod("getPose", [this] {
    const Math::Pose2D pose = getState().pose;
    return std::vector<float>{pose.x, pose.y, pose.theta};
  });
  setPose(options.start);
  xRegisterServices(description, broker);
  xAddLasers(broker);
  task.setName("EmbeddedRobot");
  task.setPeriod(options.stepPeriod);
  task.compensateCallbackTime(true);
  task.setCallback([this] { xStep(); });
}

RobotWorld::~RobotWorld() = default;

void RobotWorld::start() {
  steppedAt = ko::Clock::now();
  lasersDue = steppedAt;
  xStep();
  task.start(false);
}

void RobotWorld::stop() {
  task.stop();
}

void RobotWorld::xRegisterServices(const RobotDescription& description,
                                   const boost::shared_ptr<QVBroker>& broker) {
  broker->registerModule(context.memory);
  broker->registerModule(devices);
  broker->registerModule(motion);
  broker->registerModule(boost::make_shared<RobotModelService>(description.xml));
  const auto sonars = boost::make_shared<SonarDriver>(broker, model, context.options.sonarPeriod);
  const auto units = boost::make_shared<SonarUnits>(model, context);
  sonars->setSource([units](const std::string& sonar) { return units->measure(sonar); });
  broker->registerModule(sonars);
  broker->registerModule(boost::make_shared<VideoDevice>());
}

void RobotWorld::xAddLasers(const boost::shared_ptr<QVBroker>& broker) {
  for (const auto& [name, config] : model.sensorConfigs) {
    if (!isLaserType(config.type) || !LaserUnit::isComplete(config)) continue;
    const auto laser = boost::make_shared<LaserUnit>(config, context);
    laserGroups[laser->getModeKey()].lasers.push_back(laser);
  }
  for (auto& [modeKey, group] : laserGroups) {
    // A laser confirms its mode when its first scan is there.
    const auto scanAll = [lasers = group.lasers](int mode) {
      for (const auto& laser : lasers) laser->scan(mode, ko::Clock::now());
    };
    group.actuator =
        std::make_unique<LaserModeActuator>(broker, devices, group.lasers[0]->getActuator(),
                                            modeKey, context.options.laserStart, scanAll);
  }
}

RobotWorld::State RobotWorld::getState() const {
  Lock lock(mutex);
  return state;
}

void RobotWorld::setVelocity(const Math::Pose2D& velocity) {
  finite("velocity", velocity);
  Lock lock(mutex);
  body.setCommand(velocity);
}

void RobotWorld::setPose(const Math::Pose2D& pose) {
  finite("pose", pose);
  Lock lock(mutex);
  body.setPose(pose);
  state.pose = body.getPose();
}

void RobotWorld::setJointPositions(const std::map<std::string, double>& positions) {
  motion->setJointPositions(positions);
}

void RobotWorld::xStep() {
  const auto now = ko::Clock::now();
  xMoveBody(now);
  xRunLasers(now);
}

void RobotWorld::xMoveBody(ko::Clock::time_point now) {
  Lock lock(mutex);
  body.move(now - steppedAt, state.people);
  steppedAt = now;
  state.pose = body.getPose();
  state.velocity = body.getVelocity();
  state.odometry = body.getOdometry();
  state.collisionCount = body.getCollisionCount();
  motion->setRobotVelocity(state.velocity);
  context.surroundings->setMoment({state.pose, state.people});
}

void RobotWorld::xRunLasers(ko::Clock::time_point now) {
  if (now < lasersDue) return;
  lasersDue = std::max(lasersDue + context.options.laserPeriod, now);
  for (const auto& [modeKey, group] : laserGroups) {
    const int mode = context.memory->getStore().getData(modeKey).toInt32();
    for (const auto& laser : group.lasers) laser->scan(mode, now);
  }
}

}  // namespace QV::robot
