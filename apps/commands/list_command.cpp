#include <algorithm>
#include <iostream>
#include <memory>
#include <numbers>

#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "apps/output/number_text.h"
#include "apps/output/table.h"
#include "sensor/core/scoped_subscription.h"

namespace QV::app {
namespace {

// At the origin, and without a map, a record's transform is the sensor's mounting.
std::vector<Math::MetricalData> mountings(int kind) {
  sensor::SimulatedSensorManager manager(kind, nullptr);
  const sensor::ScopedSubscription subscription(manager, "qvsensors");
  return manager.getMetricalData();
}

// Half a turn comes back from a transform with either sign.
float headingOf(const Math::Pose2D& pose) {
  constexpr float kPi = std::numbers::pi_v<float>;
  return pose.theta < -kPi + 1e-5f ? pose.theta + 2.0f * kPi : pose.theta;
}

void list(const CommonOptions& options) {
  checkKind(options.kind);
  std::cout << "Simulated sensors of kind " << options.kind
            << ". Mounting in the robot's frame (m, rad), ranges in m, apertures in rad.\n";
  Table table({"family", "sensor", ">min", ">max", ">aperture", ">rays", ">x", ">y", ">theta"});
  auto records = mountings(options.kind);
  std::stable_sort(records.begin(), records.end(),
                   [](const auto& a, const auto& b) { return a.familyName < b.familyName; });
  for (const auto& record : records) {
    const auto& fov = record.fieldOfView;
    const auto pose = Math::pose2DFromTransform(record.sensorTransform);
    table.add({record.familyName, record.sensorName, shortest(fov.minRange), shortest(fov.maxRange),
               fixed(fov.angularRange, 3), std::to_string(fov.rayCount), fixed(pose.x, 2),
               fixed(pose.y, 2), fixed(headingOf(pose), 3)});
  }
  table.print(std::cout);
}

}  // namespace

void addListCommand(CLI::App& program) {
  auto options = std::make_shared<CommonOptions>();
  CLI::App* command = program.add_subcommand("list", "Show a robot's sensors by family");
  addKind(*command, *options);
  command->callback([options] { list(*options); });
}

}  // namespace QV::app
