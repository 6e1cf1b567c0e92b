#include "robot/world/internal/robot_world.h"

#include <cmath>
#include <random>
#include <stdexcept>
#include <utility>

#include <boost/make_shared.hpp>

#include "robot/services/video_device.h"
#include "robot/world/internal/robot_services.h"
#include "robot/world/internal/virtual_robot_contract.h"
#include "robot/world/scene/internal/body_size.h"

namespace QV::robot {
namespace {

using Lock = std::lock_guard<std::mutex>;

Math::Pose2D finite(const char* what, const Math::Pose2D& value) {
  if (std::isfinite(value.x + value.y + value.theta)) return value;
  throw std::invalid_argument(std::string("VirtualRobot: a finite ") + what + " expected");
}

void addFaultySensors(const RobotDescription& description, const UnitFactory& factory,
                      FaultPlan& faults) {
  for (const auto& [name, config] : description.model.sensorConfigs) {
    if (!factory.hasType(config.type)) continue;
    const Model::SensorKind* kind = description.kinds.findType(config.type);
    if (!kind) {
      throw std::invalid_argument("VirtualRobot: sensor \"" + name +
                                  "\": a type of the description's kinds expected, " +
                                  std::to_string(config.type) + " given");
    }
    faults.addSensor(name, kind->hasRate);
  }
}

}  // namespace

RobotWorld::RobotWorld(const RobotDescription& description,
                       boost::shared_ptr<const OccupancyMap> map, const WorldOptions& options,
                       const boost::shared_ptr<QVBroker>& broker, const UnitFactory& factory)
    : QVModule(VirtualRobotContract::kModule),
      model(description.model),
      motion(boost::make_shared<MotionService>(model)),
      context(UnitParts::makeContext(std::move(map), options, motion, broker)),
      bodySize(measureBody(model, *motion)),
      body(UnitParts::of(context).getScene(), bodySize, options.start),
      crowd(UnitParts::of(context).getScene(), options, bodySize.radius) {
  xBindMethods();
  state.people = crowd.getPositions();
  setPose(options.start);
  xSetOdometryErrors();
  xMakeUnits(description, broker, factory);
  task.setName("VirtualRobot");
  task.setPeriod(options.stepPeriod);
  task.compensateCallbackTime(true);
  task.setCallback([this] { xStep(); });
}

RobotWorld::~RobotWorld() = default;

void RobotWorld::xBindMethods() {
  bindMethod(VirtualRobotContract::kSetVelocity, [this](float vx, float vy, float omega) {
    setVelocity({vx, vy, omega});
  });
  bindMethod(VirtualRobotContract::kGetPose, [this] {
    const Math::Pose2D pose = getState().pose;
    return std::vector<float>{pose.x, pose.y, pose.theta};
  });
}

void RobotWorld::xSetOdometryErrors() {
  std::mt19937 generator = context.makeGenerator("odometry");
  std::normal_distribution<float> error;
  const float drift = context.getOptions().odometryDrift;
  const float distanceError = drift * error(generator);
  body.setOdometryErrors(distanceError, drift * error(generator));
}

void RobotWorld::xMakeUnits(const RobotDescription& description,
                            const boost::shared_ptr<QVBroker>& broker, const UnitFactory& factory) {
  addFaultySensors(description, factory, getFaults());
  RobotServices services(broker, description, context, motion);
  cameras = services.get().cameras;
  units = std::make_unique<UnitSchedule>(factory.make(model, context));
  services.keep();
}

void RobotWorld::start() {
  steppedAt = ko::Clock::now();
  xStep();
  task.start(false);
}

void RobotWorld::stop() {
  task.stop();
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
  context.getSurroundings().setMoment({state.pose, state.people});
}

void RobotWorld::xStep() {
  const auto now = ko::Clock::now();
  motion->setRobotVelocity(xMove(now));
  // Measured anew, as on a robot whose history of postures reaches a second back.
  motion->setGroundPose(Math::Transform());
  units->measure(now);
  if (InputListener* const hears = listener) hears->onStep(xGetStep());
}

void RobotWorld::setListener(InputListener* newListener) {
  listener = newListener;
  UnitParts::of(context).memory->setListener(newListener);
  InputTap::set(*cameras, newListener);
  if (newListener) newListener->onStep(xGetStep());
}

BodyStep RobotWorld::xGetStep() const {
  const State now = getState();
  return {now.pose, now.odometry, now.velocity};
}

Math::Pose2D RobotWorld::xMove(ko::Clock::time_point now) {
  Lock lock(mutex);
  const ko::Duration elapsed = now - steppedAt;
  steppedAt = now;
  body.move(elapsed, crowd.getPositions());
  crowd.walk(elapsed, Math::position2DFromPose2D(body.getPose()));
  state.pose = body.getPose();
  state.velocity = body.getVelocity();
  state.odometry = body.getOdometry();
  state.collisionCount = body.getCollisionCount();
  state.people = crowd.getPositions();
  context.getSurroundings().setMoment({state.pose, state.people, body.getContact()});
  return state.velocity;
}

}  // namespace QV::robot
