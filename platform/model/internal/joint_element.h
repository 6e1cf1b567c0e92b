#pragma once

#include "platform/model/internal/xml_reader.h"
#include "platform/model/joint_config.h"

namespace QV::Model::detail {

/** Reads a `<joint>` alone; a mimic as it is written. Throws as robotFromXml does. */
JointConfig readJoint(const XMLElement& element, const LinkElements& links);

}  // namespace QV::Model::detail
