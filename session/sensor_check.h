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

enum class Verdict { works, noRecord, late, frozen, badData, failedToStart, notBuilt };

/** "works", "no record", ... */
QV_API const char* getName(Verdict verdict);

/** The result of checking one sensor. */
struct QV_API CheckedSensor {
  std::string name;
  std::string family;
  Verdict verdict = Verdict::works;
  /** The reason if it does not work; otherwise a remark, or nothing. */
  std::string why = {};
  std::size_t records = 0;
  std::size_t points = 0;
  /** The health at the end of its check. */
  sensor::SensorHealth health = {};

  bool works() const { return verdict == Verdict::works && !isFault(health.state); }
};

struct QV_API CheckOptions {
  /** The sensors to check, by name, also those of the description that could not be built. None
   * means all. */
  std::set<std::string> sensors = {};
  /** The kinds for sensors whose manager knows no kind, found by their families. */
  Model::SensorKinds kinds = Model::SensorKinds::standard();
  /** Called after each sensor with the progress, 0 to 1; return false to stop. */
  std::function<bool(double)> goesOn = {};
};

/**
 * Checks each sensor in turn, by the rules of its kind: subscribes, watches its records for two and
 * a half seconds of ko::Clock, and unsubscribes. A sensor with a record older than 0.4 s is
 * late. A thread that owns simulated time advances it.
 */
QV_API std::vector<CheckedSensor> checkSensors(sensor::SensorManager& manager,
                                               const CheckOptions& options = {});

/**
 * Checks a session's sensors likewise. Then turns the robot on the spot, watches each sensor for as
 * long again, and turns back: a sensor whose points stay the same is
 * frozen.
 */
QV_API std::vector<CheckedSensor> checkSensors(Session& session, const CheckOptions& options = {});

/**
 * Finds probable mistakes in the description of a session's robot, and memory keys that nobody has
 * written so far. None without a description.
 */
QV_API std::vector<Model::DescriptionFault> findDescriptionFaults(Session& session);

/** Finds the same for any robot, after its drivers have written. Without a memory: QVError. */
QV_API std::vector<Model::DescriptionFault> findDescriptionFaults(
    const boost::shared_ptr<QVBroker>& broker, const Model::Robot& robot,
    const Model::SensorKinds& kinds = Model::SensorKinds::standard());

}  // namespace QV::session
