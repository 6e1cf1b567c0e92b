#include "ros2/bag/bag_reader.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <stdexcept>
#include <string_view>

#include "ros2/bag/internal/bag_file.h"
#include "ros2/bag/internal/mcap_records.h"

namespace QV::ros2 {
namespace {

constexpr std::string_view kSqlite = "SQLite format 3";
constexpr std::string_view kZstd = "\x28\xb5\x2f\xfd";

}  // namespace

std::unique_ptr<BagFile> openBag(const std::string& path, BagOrder order) {
  if (std::filesystem::is_directory(path)) return openFolder(path, order);
  auto source = openFile(path);
  std::array<char, kSqlite.size()> begin{};
  source->read(
      0, {reinterpret_cast<std::uint8_t*>(begin.data()),
          static_cast<std::size_t>(std::min<std::uint64_t>(begin.size(), source->getSize()))});
  const std::string_view text(begin.data(), begin.size());
  if (text == kSqlite) return openSqlite(path);
  if (text.starts_with(kZstd))
    throw std::runtime_error(
        path + ": a recording expected, a zstd-compressed file given; decompress it first");
  return openMcap(std::move(source), path, order);
}

BagReader::BagReader(const std::string& path, BagOrder order) : file(openBag(path, order)) {}

BagReader::~BagReader() = default;

std::vector<const BagTopic*> BagReader::getTopics() const {
  auto topics = file->getTopics();
  std::stable_sort(topics.begin(), topics.end(),
                   [](const auto* a, const auto* b) { return a->name < b->name; });
  return topics;
}

std::optional<std::uint64_t> BagReader::getCount(const std::string& topic) const {
  return file->getCount(topic);
}

void BagReader::checkWhole() {
  file->checkWhole();
}

BagTimes BagReader::getTimes() const {
  return file->getTimes();
}

const std::vector<BagMetadata>& BagReader::getMetadata() const {
  return file->getMetadata();
}

std::size_t BagReader::getAttachmentCount() const {
  return file->getAttachmentCount();
}

std::optional<BagAttachment> BagReader::readAttachment(std::size_t index) {
  return file->readAttachment(index);
}

std::optional<BagMessage> BagReader::next() {
  return file->next();
}

void BagReader::seek(std::uint64_t logTime) {
  file->seek(logTime);
}

const BagDamage& BagReader::getDamage() const {
  return file->getDamage();
}

}  // namespace QV::ros2
