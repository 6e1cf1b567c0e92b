#include "ros2/bag/internal/mcap_summary_writer.h"

#include "ros2/bag/internal/crc32.h"
#include "ros2/bag/internal/record_bytes.h"

namespace QV::ros2 {
namespace {

/** The groups of the summary, which go to the file, and where each stands. */
class Groups {
 public:
  explicit Groups(OutputFile& file) : file(file), start(file.getSize()) {}

  template <typename Record>
  void add(mcap::Op op, const std::vector<Record>& records) {
    Bytes group;
    for (const Record& record : records) append(group, record);
    xNote(op, group.size());
    xWrite(group);
  }

  void add(mcap::Op op, const SpilledBytes& group) {
    xNote(op, group.getSize());
    group.read([&](BytesView piece) { xWrite(piece); });
  }

  void finish() {
    mcap::appendFooter(offsets, {start, file.getSize()});
    crc = crc32(offsets, crc);
    RecordWriter(offsets).number(crc).raw(mcap::kMagic);
    file.write(offsets);
  }

 private:
  void xNote(mcap::Op op, std::uint64_t size) {
    if (size > 0) appendSummaryOffset(offsets, op, file.getSize(), size);
  }

  void xWrite(BytesView bytes) {
    file.write(bytes);
    crc = crc32(bytes, crc);
  }

  OutputFile& file;
  const std::uint64_t start;
  std::uint32_t crc = 0;
  Bytes offsets;
};

}  // namespace

void writeSummary(OutputFile& file, const McapSummary& summary) {
  Bytes dataEnd;
  mcap::appendDataEnd(dataEnd, file.getCrc());
  file.write(dataEnd);
  Groups groups(file);
  groups.add(mcap::Op::schema, summary.schemas);
  groups.add(mcap::Op::channel, summary.channels);
  groups.add(mcap::Op::statistics, std::vector{summary.statistics});
  groups.add(mcap::Op::chunkIndex, summary.chunks);
  groups.add(mcap::Op::attachmentIndex, summary.attachments);
  groups.add(mcap::Op::metadataIndex, summary.metadata);
  groups.finish();
}

}  // namespace QV::ros2
