#pragma once

#include <string>

#include "platform/api.h"
#include "platform/ko/clock.h"

namespace QV::robot {

/**
 * The ways in which a sensor of a VirtualRobot fails; docs/faults.md says what each does to which
 * sensor.
 */
enum class FaultKind { off, stuck, garbage, wrong, slow, delayed, intermittent };

/** "off", "stuck", ... */
QV_API std::string getName(FaultKind kind);
/** Finds a kind by its name. Throws std::invalid_argument, with the known names, for another
 * one. */
QV_API FaultKind parseFaultKind(const std::string& name);

/**
 * A fault of one sensor, from one second of the robot's life to another.
 *
 *     using boost::chrono::seconds;
 *     robot.setFault({"FrontLaser", QV::robot::FaultKind::stuck, seconds(10), seconds(20)});
 *     robot.setFault(QV::robot::parseFault("FrontLaser:stuck@10-20"));  // the same
 */
struct QV_API Fault {
  std::string sensor;
  FaultKind kind = FaultKind::off;
  /** The begin and the end, counted since the robot was made; `to` is the first moment without
   * the fault. */
  ko::Duration from = ko::Duration::zero();
  ko::Duration to = ko::Duration::max();

  friend bool operator==(const Fault&, const Fault&) = default;
};

/**
 * Reads "NAME:KIND" or "NAME:KIND@FROM-TO", times in seconds, 0 <= FROM < TO. Throws
 * std::invalid_argument for any other text, and says what was expected.
 */
QV_API Fault parseFault(const std::string& text);

}  // namespace QV::robot
