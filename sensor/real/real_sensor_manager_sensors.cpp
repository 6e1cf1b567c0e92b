#include <algorithm>
#include <exception>
#include <string>

#include "platform/ko/log.h"
#include "platform/middleware/contracts/robot_model_contract.h"
#include "platform/middleware/qv_proxy.h"
#include "platform/model/model_utils.h"
#include "platform/model/robot.h"
#include "platform/model/sensor_properties.h"
#include "sensor/core/internal/health_inside.h"
#include "sensor/core/internal/health_rule_text.h"
#include "sensor/real/real_sensor_manager.h"

// The part of RealSensorManager that builds the sensors.
namespace QV::sensor {
namespace {

constexpr char kRealManagerCategory[] = "Navigation.RealSensorManager";

// Among two sensors of the library with one name the first stays, without a log line.
bool isOurs(const Model::SensorKind& kind) {
  return Model::SensorKinds::standard().findType(kind.type) != nullptr;
}

bool isComplete(const SensorOrder& order) {
  const Model::SensorProperties properties(order.config);
  return std::ranges::all_of(order.kind.properties, [&properties](const auto& rule) {
    return !rule.isNeededToMake || properties.has(rule.name);
  });
}

/** Returns the period of the description, if it gives one that makes sense. */
ko::Duration periodOf(const Model::SensorProperties& properties, const Model::SensorKind& kind) {
  const Model::PropertyRule* rule = kind.findProperty("period");
  const double seconds = properties.getNumber("period");
  if (!rule || !(seconds >= rule->least && seconds <= rule->most)) return kind.period;
  return boost::chrono::duration_cast<ko::Duration>(boost::chrono::duration<double>(seconds));
}

}  // namespace

void RealSensorManager::xInitSensors() {
  Model::Robot robot;
  try {
    robot = Model::ModelUtils::robotFromXml(broker->getProxy(RobotModelContract::kModule, 0)
                                                ->call<std::string>(RobotModelContract::kGetConfig),
                                            factory.getKinds());
  } catch (const std::exception& exception) {
    ko::log::error(kRealManagerCategory, "xInitSensors")
        << "QVRobotModel is not found. " << exception.what();
    return;
  }
  for (const auto& [name, config] : robot.sensorConfigs) {
    const Model::SensorKind* kind = factory.getKinds().findType(config.type);
    if (!kind) continue;
    xCreate({config, *kind, Model::SensorProperties(config).getFieldOfView(), broker,
             robot.kindCode, *this});
  }
}

void RealSensorManager::xCreate(const SensorOrder& order) {
  const auto failed = [this, &order](const std::string& reason) {
    logTrouble(order.config.name, kRealManagerCategory, "xInitSensors",
               factory.getFailure(order.config) + ": \n" + reason);
  };
  if (!isComplete(order)) {
    return logTrouble(
        order.config.name, kRealManagerCategory, "xInitSensors",
        "Unable to initialize sensor " + order.config.name + " because its model is incomplete.");
  }
  try {
    for (const auto& sensor : factory.create(order)) {
      const std::string name = sensor->getName();
      if (xIsSensor(name) && !isOurs(order.kind)) {
        failed("a name of its own expected, another sensor is called \"" + name + "\"");
        continue;
      }
      xAddSensor(sensor);
      // A second one that stands for all is not kept.
      if (sensors.at(name) != sensor) continue;
      types[name] = order.kind.type;
      xDescribeHealth(*sensor, order);
    }
  } catch (const std::exception& exception) {
    failed(exception.what());
  }
}

const Model::SensorKind* RealSensorManager::findKind(const std::string& sensor) const {
  const auto type = types.find(sensor);
  return type == types.end() ? nullptr : factory.getKinds().findType(type->second);
}

void RealSensorManager::xAddSensor(boost::shared_ptr<Sensor> sensor) {
  const std::string name = sensor->getName();
  const std::string family = sensor->getFamilyName();
  sensors.emplace(name, sensor);
  ko::log::verbose(kRealManagerCategory, "xAddSensor") << name << " - " << family;
  families[family].insert(name);
}

void RealSensorManager::xDescribeHealth(const Sensor& sensor, const SensorOrder& order) {
  using Model::PointMeaning;
  const Model::SensorKind& kind = order.kind;
  const bool isMoved = kind.points != PointMeaning::touch && kind.points != PointMeaning::zone &&
                       kind.points != PointMeaning::floor;
  const Model::SensorProperties properties(order.config);
  const ko::Duration period = std::max(periodOf(properties, kind),
                                       ko::Duration(boost::chrono::milliseconds(updatePeriodMs)));
  healthOf(*this).describe(sensor, {kind.points, kind.silence, kind.hasRate, isMoved}, period);
  for (const ReadHealthRule& limit : readDescribedLimits(properties.getText("limits"))) {
    if (limit.expected.empty()) {
      healthOf(*this).setLimit(sensor.getName(), limit.rule.limit, limit.rule.value);
    } else {
      logTrouble(
          sensor.getName(), kRealManagerCategory, "xInitSensors",
          sensor.getName() + ": limit \"" + limit.text + "\": " + limit.expected + " expected");
    }
  }
}

}  // namespace QV::sensor
