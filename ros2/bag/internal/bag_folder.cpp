#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include <yaml-cpp/yaml.h>

#include "ros2/bag/internal/bag_file.h"

namespace QV::ros2 {
namespace {

namespace fs = std::filesystem;

/** The files of a recording, one after the other. */
class BagFolder : public BagFile {
 public:
  explicit BagFolder(std::vector<std::unique_ptr<BagFile>> files) : files(std::move(files)) {
    for (const auto& file : this->files) {
      metadata.insert(metadata.end(), file->getMetadata().begin(), file->getMetadata().end());
      for (const BagTopic* const topic : file->getTopics()) topics.emplace(topic->name, topic);
    }
  }

  /** Returns the topics; of those that are in several files, the first file's. */
  std::vector<const BagTopic*> getTopics() const override {
    std::vector<const BagTopic*> result;
    result.reserve(topics.size());
    for (const auto& [name, topic] : topics) result.push_back(topic);
    return result;
  }

  void checkWhole() override {
    for (const auto& file : files) file->checkWhole();
  }

  BagTimes getTimes() const override {
    BagTimes times = files.front()->getTimes();
    for (const auto& file : files) {
      times.start = std::min(times.start, file->getTimes().start);
      times.end = std::max(times.end, file->getTimes().end);
    }
    return times;
  }

  std::optional<std::uint64_t> getCount(const std::string& name) const override {
    std::uint64_t count = 0;
    for (const auto& file : files) {
      const auto part = file->getCount(name);
      if (!part) return std::nullopt;
      count += *part;
    }
    return count;
  }

  std::optional<BagMessage> next() override {
    for (; current < files.size(); ++current) {
      auto message = files[current]->next();
      if (!message) continue;
      message->topic = topics.emplace(message->topic->name, message->topic).first->second;
      return message;
    }
    return std::nullopt;
  }

  void seek(std::uint64_t logTime) override {
    for (const auto& file : files) file->seek(logTime);
    current = 0;
  }

  const std::vector<BagMetadata>& getMetadata() const override { return metadata; }

  const BagDamage& getDamage() const override {
    damage = {};
    for (const auto& file : files) {
      const BagDamage& part = file->getDamage();
      damage.chunks += part.chunks;
      damage.messages += part.messages;
      const std::size_t room = BagDamage::kMostLines - damage.lines.size();
      damage.lines.insert(
          damage.lines.end(), part.lines.begin(),
          part.lines.begin() + static_cast<std::ptrdiff_t>(std::min(room, part.lines.size())));
    }
    return damage;
  }

 private:
  const std::vector<std::unique_ptr<BagFile>> files;
  std::size_t current = 0;
  std::map<std::string, const BagTopic*> topics;
  std::vector<BagMetadata> metadata;
  mutable BagDamage damage;
};

/** A recording names files of its folder; one that has been renamed still names the old folder. */
fs::path findFile(const fs::path& folder, const fs::path& name) {
  fs::path path = folder / name.filename();
  if (!fs::is_regular_file(path))
    throw std::runtime_error("a file " + name.filename().string() + " expected, there is none");
  return path;
}

std::vector<fs::path> filesOf(const fs::path& folder) {
  const fs::path path = folder / "metadata.yaml";
  if (!fs::exists(path)) throw std::runtime_error("a metadata.yaml expected, there is none");
  const YAML::Node info = YAML::LoadFile(path.string())["rosbag2_bagfile_information"];
  if (!info || !info["relative_file_paths"])
    throw std::runtime_error("metadata.yaml: relative_file_paths expected");
  const auto mode = info["compression_mode"].as<std::string>("");
  if (!mode.empty() && mode != "none" && mode != "NONE")
    throw std::runtime_error("metadata.yaml: compression_mode none expected, \"" + mode +
                             "\" given: unpack the files first");
  std::vector<fs::path> files;
  for (const YAML::Node& name : info["relative_file_paths"]) {
    files.push_back(findFile(folder, name.as<std::string>()));
    if (std::find(files.begin(), files.end() - 1, files.back()) != files.end() - 1)
      throw std::runtime_error("metadata.yaml: each file once expected, " +
                               files.back().filename().string() + " is there again");
  }
  if (files.empty()) throw std::runtime_error("metadata.yaml: files expected, it names none");
  return files;
}

}  // namespace

std::unique_ptr<BagFile> openFolder(const std::string& path, BagOrder order) {
  std::vector<fs::path> names;
  try {
    names = filesOf(path);
  } catch (const std::exception& error) {
    throw std::runtime_error(path + ": " + error.what());
  }
  std::vector<std::unique_ptr<BagFile>> files;
  files.reserve(names.size());
  for (const auto& name : names) files.push_back(openBag(name.string(), order));
  return std::make_unique<BagFolder>(std::move(files));
}

}  // namespace QV::ros2
