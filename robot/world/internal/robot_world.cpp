#include "robot/world/internal/robot_world.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

#include "platform/middleware/qv_error.h"
#include "platform/vision/video_codes.h"
#include "robot/services/robot_model_service.h"
#include "robot/services/sensor_types.h"
#include "robot/services/sonar_driver.h"
#include "robot/world/internal/generator.h"
#include "robot/world/scene/body_size.h"
#include "robot/world/units/depth_unit.h"
#include "robot/world/units/sensor_properties.h"
#include "robot/world/units/sonar_units.h"

namespace QV::robot {
namespace {

typedef std::lock_guard<std::mutex> Lock;

Math::Pose2D finite(const char* what, const Math::Pose2D& value) {
  if (std::isfinite(value.x + value.y + value.theta)) return value;
  throw std::invalid_argument(std::string("VirtualRobot: a finite ") + what + " expected");
}

/** So that a broker with another robot's services is left as it is. */
void checkNames(const QVBroker& broker) {
  for (const char* name : {"VirtualRobot", "QVMemory", "DCM", "QVMotion", "QVRobotModel", "QVSonar",
                           "QVVideoDevice"}) {
    if (!broker.isModulePresent(name)) continue;
    throw QVError("VirtualRobot", "VirtualRobot",
                  std::string("the broker has a module \"") + name + "\" already");
  }
}

UnitContext makeContext(boost::shared_ptr<const OccupancyMap> map, const WorldOptions& options,
                        const boost::shared_ptr<MotionService>& motion,
                        const boost::shared_ptr<FaultPlan>& faults,
                        const boost::shared_ptr<QVBroker>& broker) {
  checkOptions(options);
  checkNames(*broker);
  return {boost::make_shared<Surroundings>(std::move(map), options, motion), faults,
          boost::make_shared<MemoryService>(broker), options};
}

}  // namespace

RobotWorld::RobotWorld(const RobotDescription& description,
                       boost::shared_ptr<const OccupancyMap> map, const WorldOptions& options,
                       const boost::shared_ptr<QVBroker>& broker)
    : QVModule("VirtualRobot"),
      model(description.model),
      motion(boost::make_shared<MotionService>(model)),
      devices(boost::make_shared<DeviceManager>(broker)),
      faults(boost::make_shared<FaultPlan>(model, ko::Clock::now())),
      context(makeContext(std::move(map), options, motion, faults, broker)),
      touch(model, context),
      lasers(model, context),
      bodySize(measureBody(model, *motion)),
      body(context.surroundings->getScene(), bodySize, options.start),
      crowd(context.surroundings->getScene(), options, bodySize.radius),
      laserBeat{options.laserPeriod},
      blindZoneBeat{options.sonarPeriod},
      peopleBeat{options.peoplePeriod} {
  bindMethod("setVelocity", [this](float vx, float vy, float omega) {
    setVelocity({vx, vy, omega});
  });
  bindMethod("getPose", [this] {
    const Math::Pose2D pose = getState().pose;
    return std::vector<float>{pose.x, pose.y, pose.theta};
  });
  state.people = crowd.getPositions();
  setPose(options.start);
  xSetOdometryErrors();
  xRegisterServices(description, broker);
  lasers.connect(broker, devices);
  xAddBlindZones();
  task.setName("VirtualRobot");
  task.setPeriod(options.stepPeriod);
  task.compensateCallbackTime(true);
  task.setCallback([this] { xStep(); });
}

RobotWorld::~RobotWorld() = default;

void RobotWorld::xSetOdometryErrors() {
  std::mt19937 generator = makeGenerator(context.options.seed, "odometry");
  std::normal_distribution<float> error;
  const float distanceError = context.options.odometryDrift * error(generator);
  body.setOdometryErrors(distanceError, context.options.odometryDrift * error(generator));
}

void RobotWorld::start() {
  steppedAt = ko::Clock::now();
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
  const auto video = boost::make_shared<VideoDevice>();
  xAddCameras(*video);
  broker->registerModule(video);
}

// The first camera is the one that sensors ask for; it also looks for people.
void RobotWorld::xAddCameras(VideoDevice& video) {
  int index = kDepthCamera;
  for (const auto& [name, config] : model.sensorConfigs) {
    if (config.type != kDepthCameraType) continue;
    Camera camera;
    camera.index = index;
    camera.name = textOf(config, "cameraName").empty() ? name : textOf(config, "cameraName");
    camera.modelCode = integerOf(config, "modelCode");
    camera.horizontalFOV = angleOf(config, "horizontalAngularRange");
    camera.verticalFOV = angleOf(config, "verticalAngularRange");
    const auto unit = boost::make_shared<DepthUnit>(config, context);
    camera.source = [unit](auto& depth, auto& time) { unit->show(depth, time); };
    video.addCamera(camera);
    if (index++ == kDepthCamera) {
      peopleUnit = std::make_unique<PeopleUnit>(config, camera.name, camera.index, context);
    }
  }
}

void RobotWorld::xAddBlindZones() {
  for (const auto& [name, config] : model.sensorConfigs) {
    if (config.type != kBlindZoneType || config.memoryKeys.size() != 1) continue;
    blindZones.push_back(std::make_unique<BlindZoneUnit>(config, context));
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
  context.surroundings->setMoment({state.pose, state.people});
}

void RobotWorld::setJointPositions(const std::map<std::string, double>& positions) {
  motion->setJointPositions(positions);
}

void RobotWorld::xStep() {
  const auto now = ko::Clock::now();
  const State moved = xMove(now);
  motion->setRobotVelocity(moved.velocity);
  // Measured anew, as on a robot whose history of postures reaches a second back.
  motion->setGroundPose(Math::Transform());
  std::set<std::string> touched = touch.update(moved.contact);
  {
    Lock lock(mutex);
    state.touched.swap(touched);
  }
  lasers.update(now);
  if (laserBeat.isDue(now)) lasers.scan(now);
  if (blindZoneBeat.isDue(now)) {
    for (const auto& blindZone : blindZones) blindZone->measure(now);
  }
  if (peopleUnit && peopleBeat.isDue(now)) peopleUnit->report(now);
}

RobotWorld::State RobotWorld::xMove(ko::Clock::time_point now) {
  Lock lock(mutex);
  const ko::Duration elapsed = now - steppedAt;
  steppedAt = now;
  body.move(elapsed, crowd.getPositions());
  crowd.walk(elapsed, Math::position2DFromPose2D(body.getPose()));
  state.pose = body.getPose();
  state.velocity = body.getVelocity();
  state.odometry = body.getOdometry();
  state.contact = body.getContact();
  state.collisionCount = body.getCollisionCount();
  state.people = crowd.getPositions();
  context.surroundings->setMoment({state.pose, state.people});
  return state;
}

bool RobotWorld::Beat::isDue(ko::Clock::time_point now) {
  if (now < next) return false;
  // Those that were missed are not made up.
  next = std::max(next + period, now);
  return true;
}

}  // namespace QV::robot
