#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iomanip>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/ko/log.h"
#include "platform/navigation/internal/map_shift.h"
#include "robot/maps/internal/map_image.h"
#include "robot/maps/internal/map_settings.h"
#include "robot/maps/map_files.h"

namespace QV::robot {
namespace {

using Mode = MapSettings::Mode;

constexpr double kFullPercent = 100.0;
// Metres.
constexpr float kFinestWarned = 0.001f;

/** `darkness` from 0 (white) to 1 (black). */
double occupancyOf(const MapSettings& settings, double darkness) {
  if (darkness > settings.occupiedThreshold) return 1.0;
  if (darkness < settings.freeThreshold) return 0.0;
  const double width = settings.occupiedThreshold - settings.freeThreshold;
  if (settings.mode == Mode::trinary || width == 0.0) return OccupancyMap::kUnknown;
  return (darkness - settings.freeThreshold) / width;
}

/** The occupancy of each value that a pixel can have. */
std::vector<float> makeTable(const MapSettings& settings, const MapImage& image) {
  const int brightest = image.white * image.channels;
  std::vector<float> table;
  for (int value = 0; value <= brightest; ++value) {
    const int pixel = settings.negate ? brightest - value : value;
    double occupancy = OccupancyMap::kUnknown;
    if (settings.mode != Mode::raw) {
      occupancy = occupancyOf(settings, static_cast<double>(brightest - pixel) / brightest);
    } else if (pixel <= kFullPercent * image.channels) {
      occupancy = pixel / (kFullPercent * image.channels);
    }
    table.push_back(static_cast<float>(occupancy));
  }
  return table;
}

std::vector<float> toCells(const MapImage& image, const std::vector<float>& table) {
  std::vector<float> cells;
  cells.reserve(image.pixels.size());
  for (auto end = image.pixels.end(); end != image.pixels.begin(); end -= image.width) {
    for (auto pixel = end - image.width; pixel != end; ++pixel) cells.push_back(table[*pixel]);
  }
  return cells;
}

// The user named the description, not the image.
MapImage readImageFor(const std::string& yamlPath, const std::filesystem::path& imagePath) {
  try {
    return readMapImage(imagePath);
  } catch (const std::runtime_error& failure) {
    throw std::runtime_error(yamlPath + ": image: " + failure.what());
  }
}

/** The largest coordinate of a cell, whatever its sign, in metres. */
float farthestOf(const OccupancyMap& map) {
  float farthest = 0.0f;
  for (const int column : {0, map.getWidth() - 1}) {
    for (const int row : {0, map.getHeight() - 1}) {
      const Math::Position2D centre = map.getCellCentre(column, row);
      farthest = std::max({farthest, std::abs(centre.x), std::abs(centre.y)});
    }
  }
  return farthest;
}

void logShift(const OccupancyMap& map, const std::string& yamlPath) {
  const MapShift& shift = map.getShift();
  if (!isShifted(shift)) return;
  std::ostringstream zero;
  zero << std::setprecision(12) << shift.x << ", " << shift.y;
  ko::log::info("Maps", "loadMap")
      << yamlPath << ": the zero of this map is put at " << zero.str() << " m of its file";
}

void warnIfCoarse(const OccupancyMap& map, const std::string& yamlPath) {
  const float far = farthestOf(map);
  const float step = std::nextafter(far, std::numeric_limits<float>::infinity()) - far;
  if (step <= kFinestWarned) return;
  const bool isHeldShifted = isShifted(map.getShift());
  ko::log::warning("Maps", "loadMap")
      << yamlPath << ": origin: this map reaches " << far << " m from "
      << (isHeldShifted ? "the zero that it was shifted to" : "zero")
      << ", where a position is coarser than a millimetre: it has steps of " << step << " m. "
      << (isHeldShifted ? "Shift it to its origin"
                        : "Shift it, as with --shift-origin, or choose an origin nearer to zero");
}

}  // namespace

MapShift readOriginShift(const std::string& yamlPath) {
  const MapSettings settings = readMapSettings(yamlPath);
  return {std::round(settings.originX), std::round(settings.originY)};
}

OccupancyMap loadMap(const std::string& yamlPath, const MapShift& shift) {
  const MapSettings settings = readMapSettings(yamlPath);
  const auto imagePath = std::filesystem::path(yamlPath).parent_path() / settings.image;
  const MapImage image = readImageFor(yamlPath, imagePath);
  try {
    OccupancyMap map(image.width, image.height, settings.resolution, settings.originIn(shift),
                     toCells(image, makeTable(settings, image)));
    map.setShift(shift);
    logShift(map, yamlPath);
    warnIfCoarse(map, yamlPath);
    return map;
  } catch (const std::invalid_argument& failure) {
    throw std::runtime_error(imagePath.string() + ": " + failure.what());
  }
}

}  // namespace QV::robot
