#pragma once

#include <string>
#include <vector>

#include "ros2/bag/bag_writer.h"
#include "ros2/bag/internal/mcap_records.h"

namespace QV::ros2 {

/** A channel's "offered_qos_profiles" in YAML, in the numbers that every rosbag2 reads. */
std::string qosTextOf(const Qos& qos);

/** The metadata.yaml that rosbag2 would write for the recording. */
std::string metadataTextOf(const std::vector<BagTopic>& topics, const mcap::Statistics& statistics);

}  // namespace QV::ros2
