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

/** What a creator gets: one configuration of a description. The references last as long as the
 * call. */
struct QV_API SensorOrder {
  const Model::SensorConfig& config;
  /** The row of the configuration's type. */
  const Model::SensorKind& kind;
  /** The field of view that the properties give (m, rad), with one ray. */
  Math::SensorFieldOfView2D fieldOfView;
  boost::shared_ptr<QVBroker> broker;
  /** The robot's kind: the number of `<kind>` in its description, 0 without it. */
  int kindCode = 0;
  /** The manager with the sensors of the configurations before this one, by their names. */
  const SensorManager& manager;
};

/**
 * The creators of a description's sensors: a kind and a creator for each type. A value: to add
 * sensors of your own, copy the standard factory, add them, and give the copy to a
 * RealSensorManager or to a session's OpenOptions.
 * Reading it is thread-safe. What a creator throws is logged, and that one sensor is left out.
 *
 *     QV::sensor::SensorFactory factory = QV::sensor::SensorFactory::standard();
 *     factory.add({41, "Whisker", "Whisker"}, [](const QV::sensor::SensorOrder& order) {
 *       std::cout << order.config.name << " has " << order.config.memoryKeys.size() << " keys\n";
 *       return QV::sensor::SensorFactory::Sensors();
 *     });
 *     QV::sensor::RealSensorManager sensors(robot.getBroker(), factory);
 */
class QV_API SensorFactory {
 public:
  using Sensors = std::vector<boost::shared_ptr<Sensor>>;
  /** Makes the sensors of one configuration; returns none to leave it out. */
  using Creator = std::function<Sensors(const SensorOrder&)>;

  SensorFactory() = default;
  /** Knows the kinds that the library has sensors for; a new factory knows none. */
  static const SensorFactory& standard();

  /** Adds a kind and its creator. If a sensor can't be made, `failure` is logged before the reason,
   * with the configuration's name for each "{name}". Throws std::invalid_argument as
   * SensorKinds::add() does, and for an empty creator. */
  void add(const Model::SensorKind& kind, Creator creator,
           const std::string& failure = "Unable to initialize {name}");

  const Model::SensorKinds& getKinds() const { return kinds; }

  /** Makes the sensors of an order; none for a type without a creator. Throws std::runtime_error if
   * the creator gives a null sensor. */
  Sensors create(const SensorOrder& order) const;
  /** The text that is logged before the reason; empty for a type without a creator. */
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
