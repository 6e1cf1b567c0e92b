#include "platform/model/internal/joint_element.h"

#include <map>
#include <optional>
#include <string>

#include <tinyxml2.h>

namespace QV::Model::detail {
namespace {

JointType typeOf(const XMLElement& element) {
  static const std::map<std::string, JointType> types = {
      {"fixed", JointType::fixed},           {"revolute", JointType::revolute},
      {"continuous", JointType::continuous}, {"prismatic", JointType::prismatic},
      {"planar", JointType::planar},         {"floating", JointType::floating}};
  const std::string name = requiredText(element, "type");
  const auto found = types.find(name);
  if (found == types.end()) {
    fail(element,
         "attribute type: fixed, revolute, continuous, prismatic, planar or floating "
         "expected, " +
             withQuotes(name) + " given");
  }
  return found->second;
}

// Some tools write an axis of zeros where it means nothing.
Math::Position3D axisOf(const XMLElement& joint, JointType type) {
  const Math::Position3D alongX(1.0f, 0.0f, 0.0f);
  const XMLElement* element = optionalChild(joint, "axis");
  if (!element || type == JointType::fixed || type == JointType::floating) return alongX;
  const Math::Position3D axis = requiredVector(*element, "xyz");
  const float length = norm(axis);
  if (length == 0.0f) fail(*element, "attribute xyz: a direction expected, all zeros given");
  return {axis.x / length, axis.y / length, axis.z / length};
}

std::optional<JointLimits> limitsOf(const XMLElement& joint, JointType type) {
  const bool needed = type == JointType::revolute || type == JointType::prismatic;
  const XMLElement* element =
      needed ? &requiredChild(joint, "limit") : optionalChild(joint, "limit");
  if (!element) return std::nullopt;
  const JointLimits limits{numberOr(*element, "lower", 0.0f), numberOr(*element, "upper", 0.0f),
                           requiredSize(*element, "effort"), requiredSize(*element, "velocity")};
  if (limits.lower > limits.upper) {
    fail(*element, "lower is above upper: " + std::to_string(limits.lower) + " and " +
                       std::to_string(limits.upper));
  }
  return limits;
}

std::optional<JointMimic> mimicOf(const XMLElement& joint) {
  const XMLElement* element = optionalChild(joint, "mimic");
  if (!element) return std::nullopt;
  return JointMimic{requiredText(*element, "joint"), numberOr(*element, "multiplier", 1.0f),
                    numberOr(*element, "offset", 0.0f)};
}

}  // namespace

JointConfig readJoint(const XMLElement& element, const LinkElements& links) {
  JointConfig config;
  config.name = requiredText(element, "name");
  config.type = typeOf(element);
  config.parentLink = requiredLink(requiredChild(element, "parent"), links);
  config.childLink = requiredLink(requiredChild(element, "child"), links);
  config.origin = originOf(element);
  config.axis = axisOf(element, config.type);
  config.limits = limitsOf(element, config.type);
  config.mimic = mimicOf(element);
  return config;
}

}  // namespace QV::Model::detail
