#pragma once

#include "platform/model/internal/xml_reader.h"
#include "platform/model/joint_config.h"

namespace QV::Model::detail {

/** Reads what a `<joint>` says by itself; a mimic as it is written. Errors as of robotFromXml. */
JointConfig readJoint(const XMLElement& element, const LinkElements& links);

}  // namespace QV::Model::detail
