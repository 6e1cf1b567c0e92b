#include "robot/world/units/unit_context.h"

#include <utility>

#include <boost/make_shared.hpp>

#include "platform/middleware/qv_error.h"
#include "robot/services/memory_service.h"
#include "robot/world/chance/internal/generator.h"
#include "robot/world/faults/internal/fault_plan.h"

namespace QV::robot {

UnitContext::UnitContext(boost::shared_ptr<const OccupancyMap> map, const WorldOptions& options,
                         const boost::shared_ptr<MotionService>& motion,
                         const boost::shared_ptr<QVBroker>& broker)
    : options(boost::make_shared<const WorldOptions>(options)),
      surroundings(boost::make_shared<Surroundings>(std::move(map), options, motion)),
      faults(boost::make_shared<FaultPlan>(ko::Clock::now())),
      memory(boost::make_shared<MemoryService>(broker)) {
  surroundings->setMoment({options.start});
}

UnitContext::~UnitContext() = default;

std::mt19937 UnitContext::makeGenerator(const std::string& source) const {
  return robot::makeGenerator(options->seed, source);
}

FaultFinder UnitContext::getFaults(const std::string& sensor) const {
  return [plan = faults, sensor](ko::Clock::time_point time) { return plan->find(sensor, time); };
}

void UnitContext::addFaultName(const std::string& name) const {
  faults->addSensor(name, true);
}

QVValue UnitContext::read(const std::string& key) const {
  return memory->getData(key);
}

void UnitContext::write(const std::string& key, const QVValue& value) const {
  memory->insertData(key, value);
}

void UnitContext::withdraw(const std::string& key) const {
  try {
    write(key, QVValue());
  } catch (const QVError&) {
    // The address that was given out must stay a number's.
  }
}

void UnitContext::declareEvent(const std::string& event) const {
  memory->declareEvent(event);
}

void UnitContext::raiseEvent(const std::string& event, const QVValue& value) const {
  memory->raiseEvent(event, value);
}

bool UnitContext::hasSubscribers(const std::string& event) const {
  return memory->hasSubscribers(event);
}

}  // namespace QV::robot
