#include "robot/world/units/internal/unit_parts.h"

#include <stdexcept>
#include <utility>

#include <boost/make_shared.hpp>

#include "robot/world/internal/option_checks.h"

namespace QV::robot {

UnitParts::UnitParts(boost::shared_ptr<const OccupancyMap> map, const WorldOptions& given,
                     const boost::shared_ptr<MotionService>& motion,
                     const boost::shared_ptr<QVBroker>& broker)
    : options(given),
      surroundings(std::move(map), options, motion),
      faults(ko::Clock::now()),
      memory(boost::make_shared<MemoryService>(broker)) {
  surroundings.setMoment({options.start});
}

UnitContext UnitParts::makeContext(boost::shared_ptr<const OccupancyMap> map,
                                   const WorldOptions& options,
                                   const boost::shared_ptr<MotionService>& motion,
                                   const boost::shared_ptr<QVBroker>& broker) {
  checkOptions(options);
  return UnitContext(boost::make_shared<UnitParts>(std::move(map), options, motion, broker));
}

const UnitServices& UnitParts::servicesOf(const UnitContext& context) {
  if (const UnitServices* services = of(context).services) return *services;
  throw std::logic_error("UnitFactory: the context of a robot that is being made expected");
}

}  // namespace QV::robot
