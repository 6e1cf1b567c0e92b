#pragma once

#include <string>
#include <vector>

#include "platform/model/internal/xml_reader.h"
#include "platform/model/joint_config.h"

namespace QV::Model::detail {

/** The joints of a description as a tree over its links. */
struct JointTree {
  std::string rootLink;
  /** The joints, parents before children. */
  std::vector<JointConfig> joints;
};

/**
 * Reads the joints under `<robot>`. Throws if they do not make one tree of the links, or mimic a
 * joint without a position.
 */
JointTree readJoints(const XMLElement& robot, const LinkElements& links);

}  // namespace QV::Model::detail
