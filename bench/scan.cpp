/**
 * The cost of a ray of a simulated scan, on real maps (in the folder that QV_DATA names), from
 * random free poses. Every row times the peer in turn with us, on the same poses. Rows named scan
 * take the path that the program chooses; the others are made to take theirs.
 */
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/free_poses.h"
#include "bench/mrpt_scan.h"
#include "bench/timing.h"
#include "platform/navigation/internal/map_inside.h"
#include "platform/navigation/internal/scan_path.h"
#include "robot/maps/map_files.h"

namespace QV::bench {
namespace {

constexpr float kOccupiedAbove = 0.4f;
constexpr std::size_t kPoses = 256;
/** The plain walk takes longer than all others: it has its turn in one of so many rounds. */
constexpr std::size_t kRoundsPerPlainWalk = 8;

struct MapCase {
  std::string name;
  std::string file;
  /** The cells of a side when the map is repeated; 0 when it isn't. */
  int side = 0;
  bool besideMedium = false;
};
const MapCase kMedium{"medium", "maps/range_libc/basement_hallways_5cm.yaml"};
const std::string kHugeMap = "maps/range_libc/huge_map.yaml";
const MapCase kVast{"vast", kHugeMap, 16384, true};

std::vector<MapCase> getMaps() {
  std::vector<MapCase> maps = {
      {"small", "maps/pal_small_office/map.yaml"}, kMedium, {"huge", kHugeMap, 0, true}};
  if (std::getenv("QV_BENCH_VAST") != nullptr) maps.push_back(kVast);
  return maps;
}

/** The map again and again, to the right and upwards. */
OccupancyMap repeat(const OccupancyMap& map, int side) {
  std::vector<float> cells;
  const auto length = static_cast<std::size_t>(side);
  cells.reserve(length * length);
  const auto width = static_cast<std::size_t>(map.getWidth());
  for (std::size_t row = 0; row < length; ++row) {
    const float* const from =
        map.getCells().data() + row % static_cast<std::size_t>(map.getHeight()) * width;
    for (std::size_t column = 0; column < length; column += width) {
      cells.insert(cells.end(), from, from + std::min(width, length - column));
    }
  }
  return OccupancyMap(side, side, map.getResolution(), map.getOrigin(), std::move(cells));
}

OccupancyMap makeMap(const std::string& path, int side) {
  OccupancyMap map = robot::loadMap(path);
  return side == 0 ? map : repeat(map, side);
}

struct FanCase {
  const char* name;
  Math::SensorFieldOfView2D fieldOfView;
};
const FanCase kFans[] = {{"300_rays_full_turn_3.5m", {0.0f, 3.5f, 6.2831855f, 300}},
                         {"20_rays_1rad_2m", {0.0f, 2.0f, 1.0f, 20}},
                         {"100_rays_1rad_8m", {0.0f, 8.0f, 1.0f, 100}},
                         {"720_rays_full_turn_30m", {0.0f, 30.0f, 6.2831855f, 720}}};

struct PathCase {
  const char* suffix;
  detail::ScanPath path;
};
const PathCase kPaths[] = {{"", detail::ScanPath::best},
                           {"_avx2", detail::ScanPath::avx2},
                           {"_scalar", detail::ScanPath::scalar}};

/** A walk from cell to cell as one writes it first: each ray for itself, each cell looked at. */
float walkPlainly(const OccupancyMap& map, const Math::Pose2D& inMap, float angle, float maxRange) {
  const float resolution = map.getResolution();
  const float dx = std::cos(inMap.theta + angle);
  const float dy = std::sin(inMap.theta + angle);
  int column = static_cast<int>(std::floor(inMap.x / resolution));
  int row = static_cast<int>(std::floor(inMap.y / resolution));
  const auto reach = [resolution](float position, int cell, float direction) {
    if (direction == 0.0f) return std::numeric_limits<float>::infinity();
    const float edge = static_cast<float>(direction > 0.0f ? cell + 1 : cell) * resolution;
    return (edge - position) / direction;
  };
  float nextColumn = reach(inMap.x, column, dx);
  float nextRow = reach(inMap.y, row, dy);
  float range = 0.0f;
  while (range < maxRange && map.isInside(column, row)) {
    if (map.getOccupancy(column, row) > kOccupiedAbove) return range;
    if (nextColumn < nextRow) {
      range = nextColumn;
      nextColumn += resolution / std::abs(dx);
      column += dx > 0.0f ? 1 : -1;
    } else {
      range = nextRow;
      nextRow += resolution / std::abs(dy);
      row += dy > 0.0f ? 1 : -1;
    }
  }
  return maxRange;
}

void scanPlainly(const OccupancyMap& map, const Math::SensorFieldOfView2D& fieldOfView,
                 const Math::Pose2D& pose) {
  const Math::Pose2D inMap = Math::pinv(map.getOrigin()) * pose;
  const float step = fieldOfView.angularRange / static_cast<float>(fieldOfView.rayCount - 1);
  for (int i = 0; i < fieldOfView.rayCount; ++i) {
    const float angle = -0.5f * fieldOfView.angularRange + static_cast<float>(i) * step;
    benchmark::DoNotOptimize(walkPlainly(map, inMap, angle, fieldOfView.maxRange));
  }
}

/** A map with its store and poses, and the peer's copy of it. */
struct Scene {
  Scene(const std::string& path, int side)
      : map(makeMap(path, side)), poses(drawFreePoses(map, kPoses)) {
    const detail::ScanStore* store = nullptr;
    const double seconds =
        secondsOf([&] { store = detail::MapInside::findStore(map, kOccupiedAbove); });
    const auto cells = static_cast<double>(map.getCells().size());
    buildMsPerMcell = 1e9 * seconds / cells;
    bytesPerCell = static_cast<double>(store->getBytes()) / cells;
  }

  OccupancyMap map;
  std::vector<Math::Pose2D> poses;
  double buildMsPerMcell;
  double bytesPerCell;
#ifdef QV_BENCH_MRPT
  Mrpt mrpt{map};
#endif
};

/** Made when first asked for, and kept; null without the data. */
Scene* getScene(const MapCase& mapCase) {
  static std::map<std::string, Scene> scenes;
  const auto known = scenes.find(mapCase.name);
  if (known != scenes.end()) return &known->second;
  const char* const folder = std::getenv("QV_DATA");
  const std::string path =
      folder != nullptr ? std::string(folder) + "/" + mapCase.file : std::string();
  if (!std::filesystem::exists(path)) return nullptr;
  return &scenes.try_emplace(mapCase.name, path, mapCase.side).first->second;
}

/** The seconds that a scan from every pose takes. */
template <typename Scan>
double timeScans(const Scene& scene, Scan scan) {
  return secondsOf([&] {
    for (const Math::Pose2D& pose : scene.poses) scan(pose);
  });
}

/** The seconds that each of the contenders has taken, round by round. */
struct Times {
  std::vector<double> ours;
  std::vector<double> mrpt;
  /** The times of the plain walk as multiples of ours. */
  std::vector<double> plainRatios;
};

#ifdef QV_BENCH_MRPT
double timeMrpt(Scene& scene, const Math::SensorFieldOfView2D& fieldOfView) {
  return timeScans(scene, [&](const Math::Pose2D& pose) { scene.mrpt.scan(fieldOfView, pose); });
}
#endif

/** The seconds that our scans from every pose take. */
double timeOurs(const Scene& scene, const Math::SensorFieldOfView2D& fieldOfView,
                detail::ScanPath path) {
  static std::vector<RangeReading> readings;
  return timeScans(scene, [&](const Math::Pose2D& pose) {
    simulateScan(scene.map, fieldOfView, pose, readings, kOccupiedAbove, path);
    benchmark::DoNotOptimize(readings.data());
  });
}

/** Scans from every pose with each in turn. */
void scanInTurn(Scene& scene, const Math::SensorFieldOfView2D& fieldOfView, detail::ScanPath path,
                Times& times) {
  const bool alsoPlain = times.ours.size() % kRoundsPerPlainWalk == 0;
  times.ours.push_back(timeOurs(scene, fieldOfView, path));
  if (alsoPlain) {
    const double plain = timeScans(
        scene, [&](const Math::Pose2D& pose) { scanPlainly(scene.map, fieldOfView, pose); });
    times.plainRatios.push_back(plain / times.ours.back());
  }
#ifdef QV_BENCH_MRPT
  times.mrpt.push_back(timeMrpt(scene, fieldOfView));
#endif
}

void scanMap(benchmark::State& state, const MapCase& mapCase, const FanCase& fan,
             const PathCase& pathCase) {
  Scene* const scene = getScene(mapCase);
  if (scene == nullptr) {
    state.SkipWithError((std::string("skipped: no ") + mapCase.file + " in QV_DATA").c_str());
    return;
  }
  Times warmUp;
  scanInTurn(*scene, fan.fieldOfView, pathCase.path, warmUp);
  Scene* const medium = mapCase.besideMedium ? getScene(kMedium) : nullptr;
  std::vector<double> onMedium;
  Times times;
  for (auto _ : state) {
    scanInTurn(*scene, fan.fieldOfView, pathCase.path, times);
    state.SetIterationTime(times.ours.back());
    if (medium == nullptr) continue;
      // The peer runs first: the caches hold other things, as in the medium map's rows, if more of
      // them.
#ifdef QV_BENCH_MRPT
    timeMrpt(*medium, fan.fieldOfView);
#endif
    onMedium.push_back(timeOurs(*medium, fan.fieldOfView, pathCase.path));
  }
  const auto rays = static_cast<double>(kPoses) * fan.fieldOfView.rayCount;
  state.counters["ns_per_ray"] = 1e9 * medianOf(times.ours) / rays;
  state.counters["vs_plain_walk"] = medianOf(times.plainRatios);
  state.counters["store_bytes_per_cell"] = scene->bytesPerCell;
  state.counters["store_build_ms_per_mcell"] = scene->buildMsPerMcell;
  if (!onMedium.empty()) state.counters["vs_medium"] = ratioOf(onMedium, times.ours);
  if (times.mrpt.empty()) return;
  state.counters["mrpt_ns_per_ray"] = 1e9 * medianOf(times.mrpt) / rays;
  state.counters[std::string("vs_mrpt") + pathCase.suffix] = ratioOf(times.mrpt, times.ours);
}

bool registerAll() {
  for (const MapCase& mapCase : getMaps()) {
    for (const PathCase& pathCase : kPaths) {
      if (!isSupported(pathCase.path)) continue;
      for (const FanCase& fan : kFans) {
        const std::string name =
            std::string("scan").append(pathCase.suffix) + "/" + mapCase.name + "/" + fan.name;
        registerTimed(name, scanMap, mapCase, fan, pathCase);
      }
    }
  }
  return true;
}

[[maybe_unused]] const bool isRegistered = registerAll();

}  // namespace
}  // namespace QV::bench

BENCHMARK_MAIN();
