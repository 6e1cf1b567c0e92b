#include <algorithm>
#include <array>
#include <atomic>
#include <stdexcept>
#include <string>

#include "platform/ko/internal/crew.h"
#include "platform/navigation/internal/fan_directions.h"
#include "platform/navigation/internal/scan_caster.h"
#include "platform/navigation/occ_map_simulate_scan.h"

namespace QV {
namespace {

constexpr int kMostThreads = 256;
/** A thread takes so many at a time. */
constexpr std::size_t kPosesAtATime = 8;

[[noreturn]] void reject(const std::string& expected, const std::string& given) {
  throw std::invalid_argument("occMapSimulateScans: " + expected + " expected, " + given +
                              " given");
}

std::string textOf(const Math::SensorFieldOfView2D& fieldOfView) {
  return std::to_string(fieldOfView.rayCount) + " rays over " +
         std::to_string(fieldOfView.angularRange) + " rad from " +
         std::to_string(fieldOfView.minRange) + " to " + std::to_string(fieldOfView.maxRange) +
         " m";
}

void check(std::size_t poses, const Math::SensorFieldOfView2D& fieldOfView, std::size_t ranges,
           int threads) {
  if (!detail::makesSense(fieldOfView)) reject("a field of view", textOf(fieldOfView));
  const auto rays = static_cast<std::size_t>(fieldOfView.rayCount);
  // Divided, as a product might not fit.
  if (ranges % rays != 0 || ranges / rays != poses) {
    reject(std::to_string(rays) + " ranges for each of " + std::to_string(poses) + " poses",
           std::to_string(ranges));
  }
  if (threads < 1 || threads > kMostThreads) {
    reject("1 to " + std::to_string(kMostThreads) + " threads", std::to_string(threads));
  }
}

/** The scans of all poses, for threads to share. */
class Scans {
 public:
  Scans(const OccupancyMap& map, std::span<const Math::Pose2D> poses,
        const Math::SensorFieldOfView2D& fieldOfView, std::span<float> ranges, float occupiedAbove)
      : caster(map, fieldOfView.maxRange, occupiedAbove, detail::ScanPath::best),
        limits(fieldOfView, map.getResolution()),
        poses(poses),
        fan(detail::findFanDirections(fieldOfView.angularRange, fieldOfView.rayCount)),
        ranges(ranges) {}

  /** Scans from poses that no thread has taken, until there are none. */
  void work() {
    detail::ScanCaster own = caster;
    for (;;) {
      const std::size_t begin = next.fetch_add(kPosesAtATime, std::memory_order_relaxed);
      if (begin >= poses.size()) return;
      const std::size_t end = std::min(begin + kPosesAtATime, poses.size());
      for (std::size_t i = begin; i < end; ++i) {
        if (i + 1 < end) own.fetch(poses[i + 1]);
        xScan(own, poses[i], ranges.data() + i * fan.angles.size());
      }
    }
  }

 private:
  void xScan(detail::ScanCaster& own, const Math::Pose2D& pose, float* places) const {
    if (!own.moveTo(pose)) {
      std::fill_n(places, fan.rayCount, limits.maxRange);
      return;
    }
    std::array<double, detail::FanCast::kMostRays + detail::FanCast::kMore> ways;
    for (int begin = 0; begin < fan.rayCount; begin += detail::FanCast::kMostRays) {
      const int count = std::min(detail::FanCast::kMostRays, fan.rayCount - begin);
      own.cast(&fan.cosines[begin], &fan.sines[begin], count, ways.data());
      own.getSteps().toRanges(ways.data(), count, limits, places + begin);
    }
  }

  detail::ScanCaster caster;
  detail::RangeLimits limits;
  std::span<const Math::Pose2D> poses;
  const detail::FanDirections& fan;
  std::span<float> ranges;
  /** The next scan to take, in a cache line of its own: threads read what is beside it all the
   * time. */
  alignas(64) std::atomic<std::size_t> next = 0;
};

}  // namespace

void occMapSimulateScans(const OccupancyMap& map, std::span<const Math::Pose2D> poses,
                         const Math::SensorFieldOfView2D& fieldOfView, std::span<float> ranges,
                         float occupiedAbove, int threads) {
  check(poses.size(), fieldOfView, ranges.size(), threads);
  Scans scans(map, poses, fieldOfView, ranges, occupiedAbove);
  const std::size_t most = (poses.size() + kPosesAtATime - 1) / kPosesAtATime;
  ko::detail::shareWork([&scans] { scans.work(); },
                        static_cast<int>(std::min(static_cast<std::size_t>(threads), most)) - 1);
}

}  // namespace QV
