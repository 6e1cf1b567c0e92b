#include "robot/world/units/unit_rig.h"

#include <utility>

#include <boost/make_shared.hpp>

#include "robot/services/internal/motion_service.h"
#include "robot/world/internal/robot_services.h"
#include "robot/world/units/internal/unit_parts.h"

namespace QV::robot {

class UnitRig::Impl {
 public:
  Impl(const RobotDescription& given, boost::shared_ptr<const OccupancyMap> map,
       const WorldOptions& options)
      : description(given),
        motion(boost::make_shared<MotionService>(description.model)),
        context(UnitParts::makeContext(std::move(map), options, motion, broker)),
        services(broker, description, context, motion) {
    for (const auto& [name, config] : description.model.sensorConfigs) {
      const Model::SensorKind* kind = description.kinds.findType(config.type);
      if (kind) getFaults().addSensor(name, kind->hasRate);
    }
  }

  FaultPlan& getFaults() const { return UnitParts::of(context).faults; }

  const RobotDescription description;
  const boost::shared_ptr<QVBroker> broker = QVBroker::create();
  const boost::shared_ptr<MotionService> motion;
  const UnitContext context;
  const RobotServices services;
};

UnitRig::UnitRig(const RobotDescription& description, boost::shared_ptr<const OccupancyMap> map,
                 const WorldOptions& options)
    : impl(std::make_unique<Impl>(description, std::move(map), options)) {}

UnitRig::~UnitRig() = default;

const UnitContext& UnitRig::getContext() const {
  return impl->context;
}

const boost::shared_ptr<QVBroker>& UnitRig::getBroker() const {
  return impl->broker;
}

const Model::SensorConfig& UnitRig::getConfig(const std::string& sensor) const {
  return impl->description.model.sensorConfigs.at(sensor);
}

UnitFactory::Units UnitRig::make(const UnitFactory& factory) const {
  return factory.make(impl->description.model, impl->context);
}

void UnitRig::setFault(const Fault& fault) {
  impl->getFaults().add(fault);
}

void UnitRig::clearFault(const std::string& sensor) {
  impl->getFaults().clear(sensor);
}

}  // namespace QV::robot
