#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/math/sensor_field_of_view_2d.h"
#include "platform/middleware/qv_broker.h"
#include "platform/model/sensor_config.h"
#include "platform/model/sensor_kinds.h"
#include "sensor/core/sensor_manager.h"

namespace QV::sensor {

/** What a creator is given for one configuration of a description; the references last its call. */
struct QV_API SensorOrder {
  const Model::SensorConfig& config;
  /** The row of the configuration's type. */
  const Model::SensorKind& kind;
  /** As the configuration's properties say it (m, rad), with one ray. */
  Math::SensorFieldOfView2D fieldOfView;
  boost::shared_ptr<QVBroker> broker;
  /** The robot's kind. */
  int kindCode = 0;
  /** Has the sensors of the configurations before this one, in the order of their names. */
  const SensorManager& manager;
};

/**
 * Knows how to make the sensors of a description: a kind and a creator for each type. A value:
 * whoever has sensors of his own copies the standard factory and adds them. Reading is safe from
 * several threads.
 */
class QV_API SensorFactory {
 public:
  using Sensors = std::vector<boost::shared_ptr<Sensor>>;
  /**
   * Makes the sensors of one configuration, none to leave it out. A standard exception leaves it
   * out too, and is logged.
   */
  using Creator = std::function<Sensors(const SensorOrder&)>;

  /** Knows no kind. */
  SensorFactory() = default;
  /** Knows the kinds that the library has sensors for. */
  static const SensorFactory& standard();

  /**
   * `failure` is logged before the reason when a sensor can't be made, with the configuration's
   * name for each "{name}". What SensorKinds::add refuses, or no creator: std::invalid_argument.
   */
  void add(const Model::SensorKind& kind, Creator creator,
           const std::string& failure = "Unable to initialize {name}");

  const Model::SensorKinds& getKinds() const { return kinds; }

  /** None for a type without a creator; a creator that gives a null one: std::runtime_error. */
  Sensors create(const SensorOrder& order) const;
  /** What is logged before the reason; empty for a type without a creator. */
  std::string getFailure(const Model::SensorConfig& config) const;

 private:
  struct Entry {
    Creator creator;
    std::string failure;
  };

  Model::SensorKinds kinds;
  std::map<int, Entry> entries;
};

}  // namespace QV::sensor
