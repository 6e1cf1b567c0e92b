/**
 * Recordings of any bytes, and real ones that are damaged: whatever comes out of them is the same
 * in both orders and on a second reading, and comes in order.
 */
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/value_decoder.h"
#include "ros2/bag/internal/bag_file.h"
#include "ros2/bag/internal/mcap_records.h"
#include "ros2/messages/geometry_msgs.h"

namespace QV::fuzz {
namespace {

using ros2::BagFile;
using ros2::BagOrder;
using ros2::Bytes;
using ros2::Compression;

/** Small, so that also a small input meets them. */
constexpr ros2::McapLimits kLimits{std::uint64_t{1} << 16, 300};

/** With little text, so that most damage hits what a reader follows. */
ros2::BagTopic topic(const char* name, const char* type) {
  return {name, type, "cdr", "ros2msg", "", {{"offered_qos_profiles", ""}}};
}

void writeBag(const std::string& path, Compression compression) {
  ros2::BagWriter writer(path, {compression, 250});
  const auto text = writer.addTopic(topic("/a", "std_msgs/msg/String"));
  const auto clock = writer.addTopic(topic("/b", "rosgraph_msgs/msg/Clock"));
  for (unsigned i = 0; i < 5; ++i) {
    writer.write(text, 100 - 3 * i, ros2::std_msgs::String{std::string(i, 'x')});
    writer.write(clock, 88 + 2 * i, ros2::rosgraph_msgs::Clock{{1, i}});
  }
  writer.addAttachment({"file", "text/plain", 1, 2, {1, 2, 3}});
}

/** Drops the CRCs, which would find the damage at once. */
void dropCrcs(Bytes& file) {
  const auto drop = [&](std::size_t place) { std::memset(file.data() + place, 0, 4); };
  for (std::size_t place = 8; place + ros2::mcap::kHeadSize < file.size();) {
    const auto op = ros2::mcap::Op{file[place]};
    std::uint64_t length = 0;
    std::memcpy(&length, file.data() + place + 1, sizeof length);
    if (op == ros2::mcap::Op::chunk) drop(place + ros2::mcap::kHeadSize + 24);
    if (op == ros2::mcap::Op::footer) drop(place + ros2::mcap::kHeadSize + 16);
    place += ros2::mcap::kHeadSize + length;
  }
}

Bytes makeBag(Compression compression) {
  std::string folder = (std::filesystem::temp_directory_path() / "qv_fuzz_XXXXXX").string();
  check(mkdtemp(folder.data()) != nullptr, "no folder");
  const std::string path = folder + "/bag.mcap";
  writeBag(path, compression);
  std::ifstream stream(path, std::ios::binary);
  Bytes file(std::istreambuf_iterator<char>(stream), {});
  std::filesystem::remove_all(folder);
  dropCrcs(file);
  return file;
}

const Bytes& bagOf(std::size_t index) {
  static const Bytes bags[] = {makeBag(Compression::none), makeBag(Compression::lz4),
                               makeBag(Compression::zstd)};
  return bags[index];
}

/** The first byte chooses bytes as they are, or damages to a recording: 2 bytes of place, 1 of
 * value. */
Bytes fileOf(const std::uint8_t* data, std::size_t size) {
  const std::size_t choice = size == 0 ? 0 : data[0] % 4;
  if (choice == 0) {
    Bytes file(ros2::mcap::kMagic.begin(), ros2::mcap::kMagic.end());
    if (size > 0) file.insert(file.end(), data + 1, data + size);
    return file;
  }
  Bytes file = bagOf(choice - 1);
  for (std::size_t i = 1; i + 2 < size; i += 3) {
    const std::size_t place = 8 + std::size_t{data[i]} * 256 + data[i + 1];
    if (place < file.size())
      file[place] = data[i + 2];
    else
      file.resize(file.size() - std::min<std::size_t>(file.size() - 8, data[i + 2]));
  }
  return file;
}

/** The sums of the messages, whatever their order. */
using Sums = std::vector<std::uint64_t>;

Sums sumsOf(BagFile& file, bool ordered) {
  Sums sums;
  std::uint64_t before = 0;
  while (const auto message = file.next()) {
    check(message->topic != nullptr, "a message without a topic");
    check(!ordered || message->logTime >= before, "an earlier message after a later one");
    before = message->logTime;
    std::uint64_t sum = message->logTime ^ message->publishTime;
    for (const char letter : message->topic->name)
      sum = sum * 31 + static_cast<unsigned char>(letter);
    for (const std::uint8_t byte : message->data) sum = sum * 31 + byte;
    sums.push_back(sum);
  }
  check(file.getDamage().lines.size() <= ros2::BagDamage::kMostLines, "too many lines");
  std::sort(sums.begin(), sums.end());
  return sums;
}

void checkOrders(const Bytes& bytes) {
  const auto byTime = openMcap(ros2::openMemory(bytes), "bag", BagOrder::time, kLimits);
  const Sums sums = sumsOf(*byTime, false);
  const auto byPlace = openMcap(ros2::openMemory(bytes), "bag", BagOrder::file, kLimits);
  check(sumsOf(*byPlace, false) == sums, "other messages in another order");
  for (std::size_t i = 0; i < byPlace->getAttachmentCount(); ++i) byPlace->readAttachment(i);
  byPlace->checkWhole();
}

void checkSeeking(const Bytes& bytes) {
  const auto file = openMcap(ros2::openMemory(bytes), "bag", BagOrder::time, kLimits);
  const Sums sums = sumsOf(*file, false);
  file->seek(0);
  check(sumsOf(*file, false) == sums, "other messages on a second reading");
}

// The messages give the times if there is no index.
void checkScan(Bytes bytes) {
  if (bytes.size() > ros2::mcap::kMagic.size()) bytes.pop_back();
  const auto scanned = openMcap(ros2::openMemory(bytes), "bag", BagOrder::time, kLimits);
  sumsOf(*scanned, true);
}

/**
 * Checks it by one of three readers, chosen by the input: all of them would take three times as
 * long.
 */
void checkFile(const Bytes& bytes, std::size_t choice) {
  if (choice % 3 == 0) return checkOrders(bytes);
  if (choice % 3 == 1) return checkSeeking(bytes);
  checkScan(bytes);
}

}  // namespace
}  // namespace QV::fuzz

extern "C" const char* __asan_default_options() {
  return QV::fuzz::kQuick;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  QV::fuzz::checkFile(QV::fuzz::fileOf(data, size), size == 0 ? 0 : data[0] / 4u);
  return 0;
}
