#include "robot/maps/internal/map_settings.h"

#include <map>
#include <string>

#include "robot/maps/internal/yaml_keys.h"

namespace QV::robot {
namespace {

const std::map<std::string, bool> kFlags{
    {"0", false}, {"1", true}, {"false", false}, {"true", true}};
const std::map<std::string, MapSettings::Mode> kModes{{"trinary", MapSettings::Mode::trinary},
                                                      {"scale", MapSettings::Mode::scale},
                                                      {"raw", MapSettings::Mode::raw}};

}  // namespace

MapSettings readMapSettings(const std::filesystem::path& path) {
  const YamlKeys keys(path);
  MapSettings result;
  result.image = keys.getText("image");
  result.resolution = static_cast<float>(
      keys.getNumber("resolution", 1e-6, 1e6, "metres from 0.000001 to 1000000"));
  const auto origin = keys.getNumbers("origin", 3, "a list of 3 (x, y, yaw)");
  result.originX = origin[0];
  result.originY = origin[1];
  result.yaw = static_cast<float>(origin[2]);
  result.negate = keys.choose("negate", kFlags, "0 or 1");
  result.occupiedThreshold = keys.getNumber("occupied_thresh", 0.0, 1.0, "a number from 0 to 1");
  result.freeThreshold = keys.getNumber("free_thresh", 0.0, result.occupiedThreshold,
                                        "a number from 0 to occupied_thresh");
  if (keys.has("mode")) result.mode = keys.choose("mode", kModes, "trinary, scale or raw");
  return result;
}

}  // namespace QV::robot
