// The C++ peers of bench/python/run.py: the same scans and the same reading.
#include <chrono>
#include <span>

#include <benchmark/benchmark.h>

#include "bench/mrpt_scan.h"
#include "platform/navigation/occ_map_simulate_scan.h"
#include "python/bindings/common.h"
#include "sensor/core/sensor_manager.h"

namespace QV::bench {
namespace {

namespace py = pybind11;
using Poses = py::array_t<float, py::array::c_style>;
using Records = std::vector<Math::MetricalData>;

template <typename Run>
double secondsOf(Run run) {
  const auto begin = std::chrono::steady_clock::now();
  run();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

std::span<const Math::Pose2D> posesOf(const Poses& poses) {
  return {reinterpret_cast<const Math::Pose2D*>(poses.data()),
          static_cast<std::size_t>(poses.shape(0))};
}

double scanTogether(const OccupancyMap& map, const Poses& poses,
                    const Math::SensorFieldOfView2D& view, int threads) {
  return secondsOf([&] {
    // Fresh memory, as the caller in Python gets.
    const auto count = static_cast<std::size_t>(poses.shape(0) * view.rayCount);
    const std::unique_ptr<float[]> ranges(new float[count]);
    occMapSimulateScans(map, posesOf(poses), view, {ranges.get(), count}, OccupancyMap::kSolidAbove,
                        threads);
    benchmark::DoNotOptimize(ranges.get());
  });
}

double scanOneByOne(const OccupancyMap& map, const Poses& poses,
                    const Math::SensorFieldOfView2D& view) {
  std::vector<RangeReading> readings;
  return secondsOf([&] {
    for (const Math::Pose2D& pose : posesOf(poses)) {
      occMapSimulateScan(map, view, pose, readings, OccupancyMap::kSolidAbove);
      benchmark::DoNotOptimize(readings.data());
    }
  });
}

#ifdef QV_BENCH_MRPT
double scanWithMrpt(const OccupancyMap& map, const Poses& poses,
                    const Math::SensorFieldOfView2D& view) {
  static Mrpt mrpt(map);
  return secondsOf([&] {
    for (const Math::Pose2D& pose : posesOf(poses)) mrpt.scan(view, pose);
  });
}
#endif

/** A manager whose cache is filled once. */
class CachedManager : public sensor::SensorManager {
 public:
  explicit CachedManager(const Records& records) { xSetData(records); }
  void setSensorsDebug(bool) override {}

 protected:
  Records xGetData() const override { return xCopyData(); }
  void xOnSensorOnChanged(bool) override {}
};

/** Times so many readings of records. */
double readRecords(int records, int points, int times) {
  Math::MetricalData record{"Sensor", "Laser", {}, {}, {}, {}};
  record.points.resize(static_cast<std::size_t>(points));
  const CachedManager manager(Records(static_cast<std::size_t>(records), record));
  return secondsOf([&] {
    for (int i = 0; i < times; ++i) benchmark::DoNotOptimize(manager.getMetricalData());
  });
}

}  // namespace
}  // namespace QV::bench

PYBIND11_MODULE(bench_python_peers, module) {
  using namespace QV::bench;
  py::module_::import("qv_sensor");
  module.def("scan_together", &scanTogether);
  module.def("scan_one_by_one", &scanOneByOne);
#ifdef QV_BENCH_MRPT
  module.def("scan_with_mrpt", &scanWithMrpt);
#endif
  module.def("read", &readRecords);
}
