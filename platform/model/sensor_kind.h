#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/ko/clock.h"

namespace QV::Model {

/** The meaning of the points of a kind's records, and so how they may be judged and drawn. */
enum class PointMeaning {
  /** An echo, somewhere on the arc through the points; beyond the maximum range: no echo. */
  arc,
  /** The ends of single beams, in the plane of the sensor; at the maximum range or left out:
   * nothing. */
  scan,
  /** A point nearer than the maximum range for "something is there", at it for "nothing is". */
  zone,
  /** Places of surfaces and people that were made out, in three dimensions. */
  sighting,
  /** The floor, which is the same wherever the robot goes; at the minimum range: a hole. */
  floor,
  /** A part of the body that touches something; its place says which part. */
  touch
};

/** The occasions on which a sound sensor that is started may give no record. */
enum class Silence { never, whileMoving, always };

/** The quantity of a property's text, and its unit. */
enum class Quantity { text, number, metres, radians, seconds, memoryKey, actuator };

/** The name of a quantity in messages: "a number", "metres", "a memory key". */
QV_API const char* nameOf(Quantity quantity);
/** True if such a text is a number. */
QV_API bool isNumber(Quantity quantity);

/** A property of a sensor in a robot description. */
struct QV_API PropertyRule {
  std::string name;
  Quantity quantity = Quantity::text;
  /** True if the sensor can't be used without it. */
  bool isRequired = false;
  /** The limits of a number, which are allowed themselves; none if both are 0. */
  double least = 0.0;
  double most = 0.0;
  /** True if several sensors may name the same memory key in it. */
  bool isShared = false;
  /** True if none is made without it; else one is, and is of no use. */
  bool isNeededToMake = false;

  bool hasLimits() const { return least != 0.0 || most != 0.0; }
  /** Says what is expected, for messages: "metres from 0 to 1000". */
  std::string toText() const;
};

/**
 * The properties that a sensor of any kind may have: "topic" and "limits", texts, and "period",
 * seconds.
 */
QV_API const std::vector<PropertyRule>& commonProperties();

/** The content of a memory key, for those who read it beside the sensor. */
enum class KeyContent {
  other,
  /** Metres; beyond the maximum range: nothing. */
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
 * A kind of sensor: all that is known of it, for whoever makes, feeds, judges or draws its sensors.
 * A robot has a kind, too: that is another number, see SimulatedSensorManager and `<kind>` in
 * descriptions.
 *
 *     QV::Model::SensorKind cliff = {40, "Cliff", "Cliff", QV::Model::PointMeaning::zone};
 *     cliff.keys = {1, 1, 1, "range of the floor (m)"};
 */
struct QV_API SensorKind {
  /** The number that stands for it in a description; above 0. */
  int type = 0;
  /** The word that does: "Sonar". */
  std::string name;
  /** The family that its sensors are subscribed to by. */
  std::string family;
  PointMeaning points = PointMeaning::scan;
  Silence silence = Silence::never;
  /** True if it measures again and again, rather than telling of changes. */
  bool hasRate = true;
  /**
   * True if a record leaves out the beams that met nothing, and so may have no points. Else they
   * are in it, at the maximum range.
   */
  bool leavesOutMisses = true;
  /** True if one sensor stands for all that a description lists of the kind. */
  bool standsForAll = false;
  std::vector<PropertyRule> properties = {};
  KeyRule keys = {};
  /** The time between two measurements, where a description says nothing else. */
  ko::Duration period = ko::Duration(100'000'000);

  /** The rule of a property, of the kind's own or of a common one; null for an unknown name. */
  const PropertyRule* findProperty(const std::string& property) const;
  /** True if what it sees are images of the video device. */
  bool isCamera() const;
};

}  // namespace QV::Model
