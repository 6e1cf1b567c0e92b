/**
 * The virtual robot, porter, in the project's apartment with two people, and the manager of its
 * sensors: a refresh cycle, readers beside it, many sensors, how fast simulated time runs, and what
 * it takes from a description to the first records. Run from the project's root.
 */
#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <boost/make_shared.hpp>

#include "platform/ko/simulated_time.h"
#include "platform/middleware/qv_broker.h"
#include "robot/maps/map_files.h"
#include "robot/world/virtual_robot.h"
#include "sensor/core/internal/health_inside.h"
#include "sensor/core/scoped_subscription.h"
#include "sensor/hosting/navigation_module.h"
#include "sensor/real/real_sensor_manager.h"

namespace QV::bench {
namespace {

using boost::chrono::milliseconds;
using Records = std::vector<Math::MetricalData>;

const robot::RobotDescription& porter() {
  static const auto description =
      robot::RobotDescription::fromFile("robot/descriptions/porter.urdf");
  return description;
}

boost::shared_ptr<const OccupancyMap> apartment() {
  static const auto map =
      boost::make_shared<const OccupancyMap>(robot::loadMap("maps/apartment.yaml"));
  return map;
}

robot::WorldOptions inTheCorridor() {
  robot::WorldOptions options;
  options.start = {9.0f, 6.3f, 0.0f};
  options.randomPeople = 2;
  return options;
}

class Manager : public sensor::RealSensorManager {
 public:
  Manager(const boost::shared_ptr<QVBroker>& broker, bool hasTasks)
      : RealSensorManager(broker), hasTasks(hasTasks) {}
  using RealSensorManager::xRefresh;
  using SensorManager::xUpdateData;

 protected:
  void xOnSensorOnChanged(bool anySensorOn) override {
    if (hasTasks) {
      RealSensorManager::xOnSensorOnChanged(anySensorOn);
    } else {
      healthOf(*this).setRefreshed(anySensorOn);
    }
  }

 private:
  const bool hasTasks;
};

/** Everything that runs, hosted and subscribed to; the robot drives in circles. Without tasks, its
 * sensors are refreshed by whoever measures. */
struct Robot {
  explicit Robot(bool hasTasks = true)
      : manager(boost::make_shared<Manager>(robot.getBroker(), hasTasks)) {
    robot.setVelocity(0.3f, 0.0f, 0.6f);
  }

  robot::VirtualRobot robot{porter(), apartment(), inTheCorridor()};
  boost::shared_ptr<Manager> manager;
  ScopedModule module{robot.getBroker(), boost::make_shared<sensor::NavigationModule>(manager)};
  sensor::ScopedSubscription subscription{*manager, "bench"};
};

double secondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double percentile(std::vector<double>& values, double share) {
  const auto at =
      values.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
  std::nth_element(values.begin(), at, values.end());
  return *at;
}

std::size_t countPoints(const Records& records) {
  std::size_t points = 0;
  for (const auto& record : records) points += record.points.size();
  return points;
}

void refreshCycle(benchmark::State& state) {
  ko::SimulatedTime time;
  Robot sut;
  time.advance(milliseconds(2000));
  for (auto _ : state) sut.manager->xUpdateData();
  const Records records = sut.manager->getMetricalData();
  state.counters["records"] = static_cast<double>(records.size());
  state.counters["points"] = static_cast<double>(countPoints(records));
}
BENCHMARK(refreshCycle)->Unit(benchmark::kMicrosecond);

constexpr int kLooksInARow = 15;

/** Seconds that two refreshes take, whose health is judged once, where it is watched. */
double refreshTwice(Robot& sut, ko::SimulatedTime& time) {
  double seconds = 0.0;
  for (const bool isLast : {false, true}) {
    time.advance(milliseconds(100));
    const auto start = std::chrono::steady_clock::now();
    sut.manager->xRefresh();
    if (isLast) healthOf(*sut.manager).tick();
    seconds += secondsSince(start);
  }
  return seconds;
}

// The first two don't count: on a robot, what they examine was examined just before.
double refreshOften(Robot& sut, ko::SimulatedTime& time, bool isWatched) {
  sut.manager->watchHealth(isWatched);
  refreshTwice(sut, time);
  double seconds = 0.0;
  for (int look = 0; look < kLooksInARow; ++look) seconds += refreshTwice(sut, time);
  return seconds;
}

// Both take turns, so that other load falls on both alike; so many in a row, so that readings are
// examined and sensors compared as often as on a robot.
void twoWatchedRefreshCycles(benchmark::State& state) {
  ko::SimulatedTime time;
  Robot sut(false);
  time.advance(milliseconds(2000));
  refreshOften(sut, time, true);
  double watched = 0.0;
  double unwatched = 0.0;
  for (auto _ : state) {
    const double seconds = refreshOften(sut, time, true);
    state.SetIterationTime(seconds / kLooksInARow);
    watched += seconds;
    unwatched += refreshOften(sut, time, false);
  }
  state.counters["vs_unwatched"] = unwatched / watched;
}
BENCHMARK(twoWatchedRefreshCycles)->UseManualTime()->Unit(benchmark::kMicrosecond);

/**
 * The vectors that readers copied before: more than a core's cache holds, as is a vector that was
 * just replaced.
 */
class PlainCopies {
 public:
  explicit PlainCopies(const Records& records) : ring(16, records) {}
  const Records& next() { return ring[at++ % ring.size()]; }

 private:
  std::vector<Records> ring;
  std::size_t at = 0;
};

template <typename Copy>
double secondsToCopy(Copy copy) {
  const auto start = std::chrono::steady_clock::now();
  const Records records = copy();
  const double seconds = secondsSince(start);
  benchmark::DoNotOptimize(records.data());
  return seconds;
}

// The benchmark runs in real time, so that robot and refresh run beside the readers.
void readWhileItRefreshes(benchmark::State& state) {
  static std::unique_ptr<Robot> sut;
  if (state.thread_index() == 0) {
    sut = std::make_unique<Robot>();
    while (sut->manager->getMetricalData("Asus").size() < 2) {
    }
  }
  std::unique_ptr<PlainCopies> plain;
  std::vector<double> waits;
  double copying = 0.0;
  double reading = 0.0;
  for (auto _ : state) {
    if (!plain) plain = std::make_unique<PlainCopies>(sut->manager->getMetricalData());
    waits.push_back(secondsToCopy([] { return sut->manager->getMetricalData(); }));
    reading += waits.back();
    copying += secondsToCopy([&] { return plain->next(); });
    state.SetIterationTime(waits.back());
  }
  using benchmark::Counter;
  state.counters["vs_copy"] = Counter(copying / reading, Counter::kAvgThreads);
  state.counters["median_us"] = Counter(1e6 * percentile(waits, 0.5), Counter::kAvgThreads);
  state.counters["p99_us"] = Counter(1e6 * percentile(waits, 0.99), Counter::kAvgThreads);
  if (state.thread_index() == 0) sut.reset();
}
BENCHMARK(readWhileItRefreshes)
    ->DenseThreadRange(1, 4)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

/** Measures at no cost: what is left is the manager's own. */
class Instant : public sensor::Sensor {
 public:
  explicit Instant(const std::string& name)
      : Sensor(name, "Instant", Math::SensorFieldOfView2D(0.1f, 2.0f, 1.0f, 15)) {}

 protected:
  Records xGetData() const override {
    Records records(1);
    records[0].sensorName = name;
    records[0].points.resize(15);
    return records;
  }
  bool xSubscribeToHardware() override { return true; }
  bool xUnsubscribeFromHardware() override { return true; }
};

class ManySensors : public sensor::SensorManager {
 public:
  explicit ManySensors(std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i) {
      const std::string name = "Instant/" + std::to_string(i);
      sensors[name] = boost::make_shared<Instant>(name);
      families["Instant"].insert(name);
    }
  }
  void setSensorsDebug(bool) override {}
  using SensorManager::xUpdateData;

 protected:
  Records xGetData() const override { return xCopyData(); }
  void xOnSensorOnChanged(bool) override {}
};

void refreshManySensors(benchmark::State& state) {
  ManySensors sut(state.range(0));
  const sensor::ScopedSubscription subscription(sut, "bench");
  for (auto _ : state) sut.xUpdateData();
  state.SetComplexityN(state.range(0));
}
BENCHMARK(refreshManySensors)
    ->RangeMultiplier(10)
    ->Range(10, 10'000)
    ->Complexity(benchmark::oN)
    ->Unit(benchmark::kMicrosecond);

void readManySensors(benchmark::State& state) {
  ManySensors sut(state.range(0));
  const sensor::ScopedSubscription subscription(sut, "bench");
  sut.xUpdateData();
  for (auto _ : state) benchmark::DoNotOptimize(sut.getMetricalData());
  state.SetComplexityN(state.range(0));
}
BENCHMARK(readManySensors)
    ->RangeMultiplier(10)
    ->Range(10, 10'000)
    ->Complexity(benchmark::oN)
    ->Unit(benchmark::kMicrosecond);

void secondOfSimulatedTime(benchmark::State& state) {
  ko::SimulatedTime time;
  Robot sut;
  for (auto _ : state) time.advance(milliseconds(1000));
  state.counters["times_real_time"] =
      benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(secondOfSimulatedTime)->Unit(benchmark::kMillisecond);

void startUp(benchmark::State& state) {
  double simulated = 0.0;
  for (auto _ : state) {
    ko::SimulatedTime time;
    const auto description = robot::RobotDescription::fromFile("robot/descriptions/porter.urdf");
    robot::VirtualRobot robot(description, apartment(), inTheCorridor());
    const auto manager = boost::make_shared<sensor::RealSensorManager>(robot.getBroker());
    const ScopedModule module(robot.getBroker(),
                              boost::make_shared<sensor::NavigationModule>(manager));
    const sensor::ScopedSubscription subscription(*manager, "bench");
    while (manager->getMetricalData().empty()) time.advance(milliseconds(1));
    simulated = static_cast<double>(ko::Clock::now().time_since_epoch().count()) / 1e6;
  }
  state.counters["simulated_ms"] = simulated;
}
BENCHMARK(startUp)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace QV::bench

BENCHMARK_MAIN();
