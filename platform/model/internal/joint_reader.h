#pragma once

#include <string>
#include <vector>

#include "platform/model/internal/xml_reader.h"
#include "platform/model/joint_config.h"

namespace QV::Model::detail {

/** The joints of a description as a tree over its links. */
struct JointTree {
  std::string rootLink;
  /** Parents before children. */
  std::vector<JointConfig> joints;
};

/**
 * Reads the joints under `<robot>`. Those that do not make one tree of the links,
 * or mimic what has no position, are an error.
 */
JointTree readJoints(const XMLElement& robot, const LinkElements& links);

}  // namespace QV::Model::detail
