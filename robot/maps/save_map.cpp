#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <stdexcept>

#include <yaml-cpp/emitter.h>
#include <yaml-cpp/emittermanip.h>

#include "robot/internal/file_bytes.h"
#include "robot/maps/map_files.h"

namespace QV::robot {
namespace {

// The shades that map_saver gives to free, unknown and occupied cells.
constexpr int kFreeShade = 254;
constexpr int kUnknownShade = 205;
constexpr int kOccupiedShade = 0;
constexpr float kWhite = 255.0f;

bool isTrinary(const OccupancyMap& map) {
  return std::all_of(map.getCells().begin(), map.getCells().end(), [](float occupancy) {
    return occupancy == 0.0f || occupancy == OccupancyMap::kUnknown || occupancy == 1.0f;
  });
}

int shadeOf(float occupancy, bool trinary) {
  if (!trinary) return static_cast<int>(std::lround(kWhite * (1.0f - occupancy)));
  if (occupancy == OccupancyMap::kUnknown) return kUnknownShade;
  return occupancy == 0.0f ? kFreeShade : kOccupiedShade;
}

/** The shortest text that reads back as the same number. */
template <typename Number>
std::string toText(Number number) {
  std::array<char, 32> text;
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

std::string toText(float number, double shift) {
  return shift == 0.0 ? toText(number) : toText(shift + static_cast<double>(number));
}

std::string toPgm(const OccupancyMap& map, bool trinary) {
  const auto width = static_cast<std::size_t>(map.getWidth());
  std::string pgm =
      "P5\n" + std::to_string(map.getWidth()) + " " + std::to_string(map.getHeight()) + "\n255\n";
  for (auto end = map.getCells().size(); end > 0; end -= width) {
    for (auto cell = end - width; cell < end; ++cell) {
      pgm.push_back(static_cast<char>(shadeOf(map.getCells()[cell], trinary)));
    }
  }
  return pgm;
}

std::string toYaml(const OccupancyMap& map, const std::string& image, bool trinary) {
  const Math::Pose2D& origin = map.getOrigin();
  YAML::Emitter yaml;
  yaml << YAML::BeginMap;
  yaml << YAML::Key << "image" << YAML::Value << image;
  yaml << YAML::Key << "mode" << YAML::Value << (trinary ? "trinary" : "scale");
  yaml << YAML::Key << "resolution" << YAML::Value << toText(map.getResolution());
  yaml << YAML::Key << "origin" << YAML::Value << YAML::Flow << YAML::BeginSeq
       << toText(origin.x, map.getShift().x) << toText(origin.y, map.getShift().y)
       << toText(origin.theta) << YAML::EndSeq;
  yaml << YAML::Key << "negate" << YAML::Value << "0";
  yaml << YAML::Key << "occupied_thresh" << YAML::Value << (trinary ? "0.65" : "1.0");
  yaml << YAML::Key << "free_thresh" << YAML::Value << (trinary ? "0.196" : "0.0");
  yaml << YAML::EndMap;
  return std::string(yaml.c_str()) + "\n";
}

}  // namespace

void saveMap(const OccupancyMap& map, const std::string& yamlPath) {
  const std::filesystem::path path(yamlPath);
  if (path.extension() != ".yaml" && path.extension() != ".yml") {
    throw std::runtime_error(yamlPath + ": a name that ends in .yaml or .yml expected");
  }
  const std::filesystem::path image = std::filesystem::path(path).replace_extension(".pgm");
  const bool trinary = isTrinary(map);
  writeFile(image, toPgm(map, trinary));
  writeFile(path, toYaml(map, image.filename().string(), trinary));
}

}  // namespace QV::robot
