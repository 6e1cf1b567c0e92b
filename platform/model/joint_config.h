#pragma once

#include <optional>
#include <string>

#include "platform/api.h"
#include "platform/math/position.h"
#include "platform/math/transform.h"

namespace QV::Model {

enum class JointType { fixed, revolute, continuous, prismatic, planar, floating };

/** True if the joint's position is one number (rad or m). */
inline bool hasPosition(JointType type) {
  return type == JointType::revolute || type == JointType::continuous ||
         type == JointType::prismatic;
}

/**
 * The ends of a joint's range, in radians, or metres for a prismatic joint. A continuous joint has
 * none.
 */
struct QV_API JointLimits {
  float lower = 0.0f;
  float upper = 0.0f;
  /** The maximum effort (Nm, or N for a prismatic joint). */
  float effort = 0.0f;
  /** The maximum velocity (rad/s, or m/s for a prismatic joint). */
  float velocity = 0.0f;

  friend bool operator==(const JointLimits&, const JointLimits&) = default;
};

/** position = multiplier * position(joint) + offset (rad or m). `joint` itself mimics no other. */
struct QV_API JointMimic {
  std::string joint;
  float multiplier = 1.0f;
  float offset = 0.0f;

  friend bool operator==(const JointMimic&, const JointMimic&) = default;
};

/** A joint of a robot description. Its frame is that of its child link. */
struct QV_API JointConfig {
  std::string name;
  JointType type = JointType::fixed;
  std::string parentLink;
  std::string childLink;
  /** The pose of the joint's frame at position 0 in the frame of the parent link (m, rad). */
  Math::Transform origin;
  /** The axis in the joint's frame, of unit length; unused for fixed and floating joints. */
  Math::Position3D axis{1.0f, 0.0f, 0.0f};
  /** The range; every revolute and prismatic joint has one. */
  std::optional<JointLimits> limits;
  std::optional<JointMimic> mimic;

  friend bool operator==(const JointConfig&, const JointConfig&) = default;
};

}  // namespace QV::Model
