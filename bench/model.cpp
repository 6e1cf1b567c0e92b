#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <tinyxml2.h>

#include "platform/math/internal/is_intersection_cone_shape.h"
#include "platform/model/model_utils.h"
#include "robot/services/internal/motion_service.h"

namespace {

using QV::Math::Transform;

constexpr int kJoints = 25;

/** A chain of revolute joints, each link with two shapes and each joint with a sensor. */
std::string chain(int joints) {
  std::string xml = "<robot name='chain'><link name='0'/>";
  for (int i = 1; i <= joints; ++i) {
    const std::string name = std::to_string(i);
    xml += "<link name='" + name +
           "'><collision><geometry><sphere radius='0.1'/></geometry></collision>"
           "<collision><geometry><cylinder radius='0.1' length='0.2'/></geometry></collision>"
           "</link><joint name='" +
           name + "' type='revolute'><parent link='" + std::to_string(i - 1) + "'/><child link='" +
           name +
           "'/><origin xyz='0.1 0 0.1' rpy='0.1 0.2 0.3'/><axis xyz='0 1 0'/>"
           "<limit lower='-1' upper='1' effort='1' velocity='1'/></joint><sensor name='s" +
           name + "' type='9'><parent link='" + name +
           "'/><property key='maximumDetectionDistance' value='2.5'/>"
           "<memory_key>Device/Sonar/Value</memory_key></sensor>";
  }
  return xml + "</robot>";
}

std::vector<Transform> randomPlacements() {
  std::mt19937 random(1);
  std::uniform_real_distribution<float> around(-1.0f, 1.0f);
  std::vector<Transform> placements;
  for (int i = 0; i < 1024; ++i) {
    placements.push_back(
        Transform::fromPosition({around(random), around(random), around(random)}) *
        QV::Math::rotationFrom3DRotation(around(random), around(random), around(random)));
  }
  return placements;
}

void obstruction(benchmark::State& state, const QV::Math::Shape3D& shape) {
  const std::vector<Transform> placements = randomPlacements();
  std::size_t next = 0;
  std::size_t hits = 0;
  for (auto _ : state) {
    const Transform& placement = placements[next++ % placements.size()];
    hits += QV::Math::isIntersectionConeShape({}, {1, 0, 0}, 0.5f, shape, placement, 1.5f) ? 1 : 0;
  }
  state.counters["hits"] = static_cast<double>(hits) / static_cast<double>(state.iterations());
}
BENCHMARK_CAPTURE(obstruction, box, QV::Math::Box{{0.1f, 0.1f, 0.3f}});
BENCHMARK_CAPTURE(obstruction, sphere, QV::Math::Sphere{0.1f});
BENCHMARK_CAPTURE(obstruction, cylinder, QV::Math::Cylinder{0.05f, 0.3f});
BENCHMARK_CAPTURE(obstruction, capsule, QV::Math::Capsule{0.05f, 0.3f});

void loadDescription(benchmark::State& state) {
  const std::string xml = chain(static_cast<int>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(QV::Model::ModelUtils::robotFromXml(xml));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(xml.size()));
}
BENCHMARK(loadDescription)->Arg(kJoints)->Arg(10 * kJoints)->Arg(100 * kJoints);

/** The same text, only parsed: nobody loads it in less. */
void parseAlone(benchmark::State& state) {
  const std::string xml = chain(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    tinyxml2::XMLDocument document;
    benchmark::DoNotOptimize(document.Parse(xml.data(), xml.size()));
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(xml.size()));
}
BENCHMARK(parseAlone)->Arg(kJoints)->Arg(10 * kJoints)->Arg(100 * kJoints);

// The last joint of the chain stands on all others.
void placeEveryFrame(benchmark::State& state) {
  QV::robot::MotionService motion(QV::Model::ModelUtils::robotFromXml(chain(kJoints)));
  motion.setJointPositions({{"1", 0.5}, {"7", -0.5}, {"25", 0.1}});
  for (auto _ : state) benchmark::DoNotOptimize(motion.getTransform("25", 0, true));
  state.counters["frames"] = kJoints;
}
BENCHMARK(placeEveryFrame);

}  // namespace

BENCHMARK_MAIN();
