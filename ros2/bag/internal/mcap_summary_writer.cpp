#include "ros2/bag/internal/mcap_summary_writer.h"

#include "ros2/bag/internal/crc32.h"
#include "ros2/bag/internal/record_bytes.h"

namespace QV::ros2 {
namespace {

/** The groups of the summary and where each stands. */
class Groups {
 public:
  explicit Groups(std::uint64_t start) : start(start) {}

  template <typename Record>
  void add(mcap::Op op, const std::vector<Record>& records) {
    Bytes group;
    for (const Record& record : records) append(group, record);
    add(op, group);
  }

  void add(mcap::Op op, const Bytes& group) {
    if (group.empty()) return;
    appendSummaryOffset(offsets, op, start + bytes.size(), group.size());
    bytes.insert(bytes.end(), group.begin(), group.end());
  }

  Bytes finish() {
    const mcap::Footer footer{start, start + bytes.size()};
    bytes.insert(bytes.end(), offsets.begin(), offsets.end());
    mcap::appendFooter(bytes, footer);
    RecordWriter(bytes).number(crc32(bytes)).raw(mcap::kMagic);
    return std::move(bytes);
  }

 private:
  const std::uint64_t start;
  Bytes bytes;
  Bytes offsets;
};

}  // namespace

void writeSummary(OutputFile& file, const McapSummary& summary) {
  Bytes dataEnd;
  mcap::appendDataEnd(dataEnd, file.getCrc());
  Groups groups(file.getSize() + dataEnd.size());
  groups.add(mcap::Op::schema, summary.schemas);
  groups.add(mcap::Op::channel, summary.channels);
  groups.add(mcap::Op::statistics, std::vector{summary.statistics});
  groups.add(mcap::Op::chunkIndex, summary.chunks);
  groups.add(mcap::Op::attachmentIndex, summary.attachments);
  groups.add(mcap::Op::metadataIndex, summary.metadata);
  file.write(dataEnd);
  file.write(groups.finish());
}

}  // namespace QV::ros2
