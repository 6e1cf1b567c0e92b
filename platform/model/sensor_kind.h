#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/ko/clock.h"

namespace QV::Model {

/** The meaning of the points of a kind's records. Health and drawing depend on it. */
enum class PointMeaning {
  /** An obstacle somewhere on the arc through the points. From the maximum range on: no echo. */
  arc,
  /** The ends of beams in the sensor's plane. A beam at the maximum range, or without a point, met
   * nothing. */
  scan,
  /** A single point. Nearer than the maximum range: something is there; at it: nothing is. */
  zone,
  /** The places of detected surfaces and people, in three dimensions. */
  sighting,
  /** Points on the floor, the same wherever the robot goes. At the minimum range: a hole. */
  floor,
  /** The place of a part of the body that touches something. */
  touch
};

/** The situations in which a sound, started sensor may give no record. */
enum class Silence { never, whileMoving, always };

/** The quantity of a property's text, and its unit. */
enum class Quantity { text, number, metres, radians, seconds, memoryKey, actuator };

/** The name of a quantity in messages: "a number", "metres", "a memory key". */
QV_API const char* nameOf(Quantity quantity);
/** True if a property of this quantity is a number. */
QV_API bool isNumber(Quantity quantity);

/** A property of a sensor in a robot description. */
struct QV_API PropertyRule {
  std::string name;
  Quantity quantity = Quantity::text;
  /** True if the sensor can't be used without it. */
  bool isRequired = false;
  /** The smallest and the largest number allowed; no limits if both are 0. */
  double least = 0.0;
  double most = 0.0;
  /** True if several sensors may name the same memory key in it. */
  bool isShared = false;
  /** True if the sensor can't even be built without it. If false, a sensor without a required
   * property is built but can't be used. */
  bool isNeededToMake = false;

  bool hasLimits() const { return least != 0.0 || most != 0.0; }
  /** Returns the expectation, for messages: "metres from 0 to 1000". */
  std::string toText() const;
};

/**
 * The properties that a sensor of any kind may have: "topic", "frame" and "limits", texts, and
 * "period", seconds.
 */
QV_API const std::vector<PropertyRule>& commonProperties();

/** The content of a memory key, for readers other than the sensor: recorder and graph. */
enum class KeyContent {
  other,
  /** Metres; from the maximum range on: nothing. */
  range,
  /** Alternately x and y of points in the sensor's frame, metres. */
  coordinates,
  /** A detection: above kPresenceThreshold something is there. */
  presence
};
inline constexpr float kPresenceThreshold = 0.9f;

/**
 * The number of memory keys that a sensor reads: from `least` to `most`, in groups of `groupSize`.
 */
struct QV_API KeyRule {
  std::size_t least = 0;
  std::size_t most = 0;
  std::size_t groupSize = 1;
  /** The content of a key, with its unit, for messages: "range (m)". */
  std::string content;
  KeyContent holds = KeyContent::other;
};

/**
 * A kind of sensor: a row of the table that manager, virtual robot, health and drawing use. Two
 * other numbers are called kind: a robot's (`<kind>` in descriptions), and that of a
 * SimulatedSensorManager.
 *
 *     QV::Model::SensorKind cliff = {40, "Cliff", "Cliff", QV::Model::PointMeaning::zone};
 *     cliff.keys = {1, 1, 1, "range of the floor (m)"};
 */
struct QV_API SensorKind {
  /** The number that stands for it in a description; above 0. */
  int type = 0;
  /** The name that stands for it in a description: "Sonar". */
  std::string name;
  /** The family of its sensors, a name to subscribe to. */
  std::string family;
  PointMeaning points = PointMeaning::scan;
  Silence silence = Silence::never;
  /** True if it measures periodically; false if it reports changes only. */
  bool hasRate = true;
  /**
   * True if a record leaves out beams that met nothing, and so may have no points. False if they
   * are in it, at the maximum range.
   */
  bool leavesOutMisses = true;
  /** True if all sensors of this kind in a description become one sensor (touch). */
  bool standsForAll = false;
  std::vector<PropertyRule> properties = {};
  KeyRule keys = {};
  /** The default time between two measurements. */
  ko::Duration period = ko::Duration(100'000'000);

  /** Returns the rule of one of its properties or of a common one; null for an unknown name. */
  const PropertyRule* findProperty(const std::string& property) const;
  /** True if it reads images of the video device. */
  bool isCamera() const;
};

}  // namespace QV::Model
