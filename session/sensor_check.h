#pragma once

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/middleware/qv_broker.h"
#include "platform/model/description_faults.h"
#include "platform/model/sensor_kinds.h"
#include "sensor/core/sensor_manager.h"
#include "session/session.h"

namespace QV::session {

enum class Verdict { works, noRecord, stale, badData, failedToStart, notBuilt };

/** "works", "no record", ... */
QV_API const char* getName(Verdict verdict);

/** The result of checking one sensor. */
struct QV_API CheckedSensor {
  std::string name;
  std::string family;
  Verdict verdict = Verdict::works;
  /** The reason why it does not work; or what there is to know of one that works. */
  std::string why = {};
  std::size_t records = 0;
  std::size_t points = 0;
  /** The health at the end of its check. */
  sensor::SensorHealth health = {};

  bool works() const { return verdict == Verdict::works && !isFault(health.state); }
};

struct QV_API CheckOptions {
  /** The sensors to check, by name. None means all, and those of the description that could not
   * be built. */
  std::set<std::string> sensors = {};
  /** The kinds of sensors that their manager knows none of, found by their families. */
  Model::SensorKinds kinds = Model::SensorKinds::standard();
  /** Hears after each sensor which share is done; false ends the check. */
  std::function<bool(double)> goesOn = {};
};

/**
 * Checks each sensor in turn, by what its kind says: subscribes, watches its records for two and a
 * half seconds of ko's time, and unsubscribes. Records older than 0.4 s are stale. A thread that
 * owns simulated time moves it.
 */
QV_API std::vector<CheckedSensor> checkSensors(sensor::SensorManager& manager,
                                               const CheckOptions& options = {});

/**
 * Checks a session's sensors likewise, and watches each for as long again after a turn on the spot:
 * a sensor that is stuck does not show that. Then turns back.
 */
QV_API std::vector<CheckedSensor> checkSensors(Session& session, const CheckOptions& options = {});

/**
 * Finds what is hardly meant as it stands in the description of a session's robot, and its memory
 * keys that nobody has written so far. None without a description.
 */
QV_API std::vector<Model::DescriptionFault> findDescriptionFaults(Session& session);

/** Finds the same for any robot whose drivers have had the time to write. No memory: QVError. */
QV_API std::vector<Model::DescriptionFault> findDescriptionFaults(
    const boost::shared_ptr<QVBroker>& broker, const Model::Robot& robot,
    const Model::SensorKinds& kinds = Model::SensorKinds::standard());

}  // namespace QV::session
