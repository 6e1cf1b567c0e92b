/**
 * The cost of reading a range sensor on the virtual services, and how much of that is the sensor's
 * own: the calls that it makes are timed in turn with it, by themselves.
 */
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <boost/make_shared.hpp>

#include "bench/timing.h"
#include "platform/middleware/dcm_proxy.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "platform/middleware/qv_motion_proxy.h"
#include "platform/model/model_utils.h"
#include "robot/services/internal/device_manager.h"
#include "robot/services/internal/laser_mode_actuator.h"
#include "robot/services/internal/memory_service.h"
#include "robot/services/internal/motion_service.h"
#include "robot/services/internal/robot_model_service.h"
#include "robot/services/internal/sonar_driver.h"
#include "sensor/range/internal/blind_zone_sensor.h"
#include "sensor/range/internal/hole_laser_sensor.h"
#include "sensor/range/internal/smart_sonar.h"

namespace QV::bench {
namespace {

constexpr int kReadingsAtOnce = 64;
const Math::SensorFieldOfView2D kFieldOfView(0.25f, 5.0f, 0.96f, 1);

// Two forearms at rest, so that the smart sonar looks at both and then reads.
const char kDescription[] = R"(<robot name="r"><link name="torso"/>
  <link name="left"><collision name="left"><origin xyz="0 0 -0.1"/>
    <geometry><cylinder radius="0.04" length="0.2"/></geometry></collision></link>
  <link name="right"><collision name="right"><origin xyz="0 0 -0.1"/>
    <geometry><cylinder radius="0.04" length="0.2"/></geometry></collision></link>
  <joint name="LElbowRoll" type="continuous"><parent link="torso"/><child link="left"/>
    <origin xyz="0 0.2 0"/></joint>
  <joint name="RElbowRoll" type="continuous"><parent link="torso"/><child link="right"/>
    <origin xyz="0 -0.2 0"/></joint>
  <sensor name="Front" type="9"><origin xyz="0.1 0 0"/></sensor></robot>)";

/** A robot of a virtual robot's services that stands still, and proxies to them. */
struct Robot {
  Robot() {
    const Model::Robot model = Model::ModelUtils::robotFromXml(kDescription);
    broker->registerModule(boost::make_shared<robot::MemoryService>(broker));
    broker->registerModule(devices);
    broker->registerModule(boost::make_shared<robot::MotionService>(model));
    broker->registerModule(boost::make_shared<robot::RobotModelService>(kDescription));
    broker->registerModule(boost::make_shared<robot::SonarDriver>(broker, model));
    memory = std::make_unique<QVMemoryProxy>(broker);
    motion = std::make_unique<QVMotionProxy>(broker);
    dcm = std::make_unique<DCMProxy>(broker);
    mode = std::make_unique<robot::LaserModeActuator>(broker, devices, "setMode", "mode",
                                                      ko::Duration(0));
    memory->insertData("range", 1.0f);
    memory->insertData("detector", 1.0f);
    memory->insertData("stamp", dcm->getTime(0));
    memory->insertData("error", 0);
    memory->insertData("status", 2);
  }

  /** Keys of `points` points, which are written. */
  std::vector<std::string> makePoints(int points) const {
    std::vector<std::string> keys;
    for (int i = 0; i < 2 * points; ++i) {
      keys.push_back("Device/Laser/Front/Coordinate" + std::to_string(i));
      memory->insertData(keys.back(), 1.0f);
    }
    return keys;
  }

  // The module calls that each sensor makes in a reading.
  float read(const std::string& key) const { return memory->getData(key).toFloat(); }
  std::vector<float> placeAt(ko::Clock::time_point time) const {
    return motion->getGenericProxy().call<std::vector<float>>("_getSensorTransformAtTime", "Front",
                                                              time);
  }
  std::vector<float> placeOf(const char* frame, int reference) const {
    return motion->getTransform(frame, reference, true);
  }

  boost::shared_ptr<QVBroker> broker = QVBroker::create();
  boost::shared_ptr<robot::DeviceManager> devices =
      boost::make_shared<robot::DeviceManager>(broker);
  std::unique_ptr<QVMemoryProxy> memory;
  std::unique_ptr<QVMotionProxy> motion;
  std::unique_ptr<DCMProxy> dcm;
  std::unique_ptr<robot::LaserModeActuator> mode;
};

template <typename F>
double timeMany(F run) {
  return secondsOf([&] {
    for (int i = 0; i < kReadingsAtOnce; ++i) run();
  });
}

/** Times readings of a sensor, in turn with the `calls` of one. */
void measure(benchmark::State& state, sensor::Sensor& sensor, const std::function<void()>& calls) {
  sensor.subscribe("bench");
  if (sensor.getData().empty()) return state.SkipWithError("the sensor reads nothing");
  double whole = 0.0;
  double callsAlone = 0.0;
  for (auto _ : state) {
    const double seconds = timeMany([&] { benchmark::DoNotOptimize(sensor.getData()); });
    state.SetIterationTime(seconds);
    whole += seconds;
    callsAlone += timeMany(calls);
  }
  state.SetItemsProcessed(state.iterations() * kReadingsAtOnce);
  state.counters["own_share"] = 1.0 - callsAlone / whole;
  state.counters["ns_per_reading"] =
      1e9 * whole / static_cast<double>(state.iterations() * kReadingsAtOnce);
}

void callAsSonar(const Robot& robot) {
  benchmark::DoNotOptimize(robot.dcm->getTime(0));
  benchmark::DoNotOptimize(robot.read("range"));
  benchmark::DoNotOptimize(robot.placeAt(ko::Clock::now()));
}

void callAsLaser(const Robot& robot, const std::vector<std::string>& keys) {
  benchmark::DoNotOptimize(robot.read("stamp"));
  benchmark::DoNotOptimize(robot.placeAt(ko::Clock::now()));
  for (const std::string& key : keys) benchmark::DoNotOptimize(robot.read(key));
}

void sonar(benchmark::State& state) {
  const Robot robot;
  sensor::SonarSensor sensor("Front", "Sonar", kFieldOfView, {"range"}, robot.broker, false);
  measure(state, sensor, [&] { callAsSonar(robot); });
}

void smartSonar(benchmark::State& state) {
  const Robot robot;
  sensor::SmartSonar sensor("Front", "Sonar", kFieldOfView, {"range"}, robot.broker, true);
  measure(state, sensor, [&] {
    for (const char* joint : {"LElbowRoll", "RElbowRoll"}) {
      benchmark::DoNotOptimize(robot.placeOf(joint, 0));
    }
    callAsSonar(robot);
  });
}

void laser(benchmark::State& state) {
  const Robot robot;
  const auto keys = robot.makePoints(static_cast<int>(state.range(0)));
  sensor::LaserSensor sensor("Front", "Laser", kFieldOfView, robot.broker, keys, 1, "setMode",
                             "mode", "stamp");
  measure(state, sensor, [&] { callAsLaser(robot, keys); });
}

void holeLaser(benchmark::State& state) {
  const Robot robot;
  const auto keys = robot.makePoints(static_cast<int>(state.range(0)));
  sensor::HoleLaserSensor sensor("Front", "HoleLaser", kFieldOfView, robot.broker, keys, 1,
                                 "setMode", "mode", "stamp", "error", "status");
  measure(state, sensor, [&] {
    for (const char* key : {"error", "status"}) benchmark::DoNotOptimize(robot.read(key));
    callAsLaser(robot, keys);
  });
}

void blindZone(benchmark::State& state) {
  const Robot robot;
  sensor::BlindZoneSensor sensor("Front", "BlindZone", robot.broker, {"detector"}, kFieldOfView);
  measure(state, sensor, [&] {
    benchmark::DoNotOptimize(robot.dcm->getTime(0));
    benchmark::DoNotOptimize(robot.motion->getRobotVelocity());
    benchmark::DoNotOptimize(robot.placeOf("Front", 1));
    benchmark::DoNotOptimize(robot.read("detector"));
  });
}

BENCHMARK(sonar)->UseManualTime();
BENCHMARK(smartSonar)->UseManualTime();
BENCHMARK(laser)->UseManualTime()->Arg(15)->Arg(361);
BENCHMARK(holeLaser)->UseManualTime()->Arg(15);
BENCHMARK(blindZone)->UseManualTime();

}  // namespace
}  // namespace QV::bench

BENCHMARK_MAIN();
