#pragma once

#include <vector>

#include "ros2/bag/internal/mcap_records.h"
#include "ros2/bag/internal/output_file.h"
#include "ros2/bag/internal/spilled_bytes.h"

namespace QV::ros2 {

/** The summary at the end of a file. */
struct McapSummary {
  /** Summarises the recording at `path`. */
  explicit McapSummary(const std::string& path) : chunks(path) {}

  std::vector<mcap::Schema> schemas = {};
  std::vector<mcap::Channel> channels = {};
  mcap::Statistics statistics = {};
  /** The indexes of all chunks as they will stand there: a long run has many. */
  SpilledBytes chunks;
  std::vector<mcap::AttachmentIndex> attachments = {};
  std::vector<mcap::MetadataIndex> metadata = {};
};

/** Writes everything that comes behind the last chunk. */
void writeSummary(OutputFile& file, const McapSummary& summary);

}  // namespace QV::ros2
