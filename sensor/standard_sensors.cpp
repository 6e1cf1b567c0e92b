#include <string>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>

#include "platform/ko/log.h"
#include "platform/model/sensor_properties.h"
#include "sensor/perception/internal/people_perception_sensor.h"
#include "sensor/perception/internal/touch_sensor.h"
#include "sensor/perception/sensor_3d.h"
#include "sensor/range/internal/blind_zone_sensor.h"
#include "sensor/range/internal/hole_laser_sensor.h"
#include "sensor/range/internal/laser_sensor.h"
#include "sensor/range/internal/smart_sonar.h"
#include "sensor/range/internal/sonar_sensor.h"
#include "sensor/real/sensor_factory.h"

// The creators of the library's own sensors. This stands above the rooms that it includes.
namespace QV::sensor {
namespace {

using Sensors = SensorFactory::Sensors;

constexpr char kFactoryCategory[] = "Navigation.RealSensorManager";
constexpr char kFactoryMethod[] = "xInitSensors";

// A single touch sensor stands for all: those of later configurations are built and not kept.
Sensors createTouch(const SensorOrder& order) {
  if (order.manager.isSensor(order.config.name)) return {};
  return {
      boost::make_shared<TouchSensor>("Touch", order.kind.family, order.broker, order.fieldOfView)};
}

Sensors createDepthCamera(const SensorOrder& order) {
  const std::string& family = order.kind.family;
  if (order.manager.isFamily(family)) return {};
  const auto camera =
      boost::make_shared<Sensor3D>(order.config.name, family, order.broker, order.fieldOfView);
  const auto people = boost::make_shared<PeoplePerceptionSensor>(
      "PeoplePerception", family, order.fieldOfView, std::vector<std::string>(), order.broker);
  return {camera, people};
}

Sensors createSonar(const SensorOrder& order) {
  const Model::SensorConfig& config = order.config;
  if (config.memoryKeys.empty()) return {};
  if (order.kindCode == 0) {
    return {boost::make_shared<SmartSonar>(config.name, order.kind.family, order.fieldOfView,
                                           config.memoryKeys, order.broker, true)};
  }
  return {boost::make_shared<SonarSensor>(config.name, order.kind.family, order.fieldOfView,
                                          config.memoryKeys, order.broker, false)};
}

Sensors createBlindZone(const SensorOrder& order) {
  return {boost::make_shared<BlindZoneSensor>(order.config.name, order.kind.family, order.broker,
                                              order.config.memoryKeys, order.fieldOfView)};
}

Sensors createLaser(const SensorOrder& order) {
  const Model::SensorConfig& config = order.config;
  ko::log::verbose(kFactoryCategory, kFactoryMethod) << "Horizontal laser:  " << config.name;
  const Model::SensorProperties properties(config);
  return {boost::make_shared<LaserSensor>(
      config.name, order.kind.family, order.fieldOfView, order.broker, config.memoryKeys,
      properties.getInteger("regIndex"), properties.getText("setOperationMode"),
      properties.getText("getOperationMode"), properties.getText("timestamp"))};
}

Sensors createHoleLaser(const SensorOrder& order) {
  const Model::SensorConfig& config = order.config;
  ko::log::verbose(kFactoryCategory, kFactoryMethod) << "Hole laser: " << config.name;
  const Model::SensorProperties properties(config);
  return {boost::make_shared<HoleLaserSensor>(
      config.name, order.kind.family, order.fieldOfView, order.broker, config.memoryKeys,
      properties.getInteger("regIndex"), properties.getText("setOperationMode"),
      properties.getText("getOperationMode"), properties.getText("timestamp"),
      properties.getText("inclination"), properties.getText("status"))};
}

}  // namespace

const SensorFactory& SensorFactory::standard() {
  static const SensorFactory standard = [] {
    SensorFactory factory;
    const auto add = [&factory](const char* name, Creator creator, const char* failure) {
      factory.add(*Model::SensorKinds::standard().findName(name), std::move(creator), failure);
    };
    add("Touch", createTouch, "Error while creating TouchSensor");
    add("DepthCamera", createDepthCamera, "Error while creating Sensor3D");
    add("Laser", createLaser, "Error while creating LaserSensor");
    add("Sonar", createSonar, "Unable to initialize {name}");
    add("BlindZone", createBlindZone, "Error while creating BlindZoneSensor");
    add("HoleLaser", createHoleLaser, "Error while creating LaserSensor");
    add("Shovel", createLaser, "Error while creating LaserSensor");
    return factory;
  }();
  return standard;
}

}  // namespace QV::sensor
