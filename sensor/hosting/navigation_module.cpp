#include "sensor/hosting/navigation_module.h"

#include <utility>

#include <boost/make_shared.hpp>

#include "platform/middleware/contracts/navigation_contract.h"
#include "platform/middleware/qv_error.h"
#include "sensor/core/scoped_subscription.h"
#include "sensor/perception/internal/people_perception_sensor.h"
#include "sensor/perception/internal/touch_sensor.h"
#include "sensor/real/real_sensor_manager.h"

namespace QV::sensor {
namespace {

using Name = const std::string&;

template <typename T>
std::vector<boost::shared_ptr<T>> sensorsOfType(const SensorManager& manager) {
  std::vector<boost::shared_ptr<T>> result;
  for (Name name : manager.getSensorList()) {
    if (auto sensor = boost::dynamic_pointer_cast<T>(manager.getSensorPtr(name))) {
      result.push_back(std::move(sensor));
    }
  }
  return result;
}

}  // namespace

NavigationModule::NavigationModule() : QVModule(NavigationContract::kModule) {}

NavigationModule::NavigationModule(const boost::shared_ptr<QVBroker>& broker)
    : NavigationModule(broker, SensorFactory::standard()) {}

NavigationModule::NavigationModule(const boost::shared_ptr<QVBroker>& broker,
                                   const SensorFactory& factory)
    : NavigationModule() {
  xHost(boost::make_shared<RealSensorManager>(broker, factory));
}

NavigationModule::NavigationModule(boost::shared_ptr<SensorManager> manager) : NavigationModule() {
  if (!manager) throw QVError(NavigationContract::kModule, "NavigationModule", "no manager given");
  xHost(std::move(manager));
}

NavigationModule::~NavigationModule() {
  if (!manager) return;
  for (Name subscriber : manager->getSubscribers()) {
    unsubscribeGuarded(*manager, subscriber, manager->getFamilyNames());
  }
}

void NavigationModule::xHost(boost::shared_ptr<SensorManager> newManager) {
  manager = std::move(newManager);
  touchSensors = sensorsOfType<TouchSensor>(*manager);
  peopleSensors = sensorsOfType<PeoplePerceptionSensor>(*manager);
  xBindEvents();
  xBindSubscriptions();
  xBindSwitches();
  xBindLists();
  xBindQuestions();
  xBindReadings();
}

}  // namespace QV::sensor
