#include "robot/world/units/touch_units.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "robot/services/sensor_types.h"
#include "robot/world/faults/fault_channel.h"
#include "robot/world/internal/generator.h"
#include "robot/world/units/sensor_properties.h"

namespace QV::robot {
namespace {

constexpr char kEvent[] = "TouchChanged";
// What the event calls a touch of this kind.
constexpr int kBumperTouch = 2;
constexpr ko::Duration kNonsensePeriod(500'000'000);

float angleBetween(float a, float b) {
  return std::abs(std::remainder(a - b, 2.0f * std::numbers::pi_v<float>));
}

}  // namespace

class TouchUnits::Bumper {
 public:
  Bumper(const Model::SensorConfig& config, const UnitContext& context)
      : sensor(config.name),
        link(config.parentLink),
        halfAperture(0.5f * angleOf(config, "horizontalAngularRange")),
        channel(
            context.faults, config.name, [](bool pressed) { return pressed; },
            [](bool pressed) { return !pressed; }) {}

  /** Whether what it tells of itself has changed; gone, it tells nothing. */
  bool update(bool pressed, ko::Clock::time_point now) {
    const auto sample = channel.pass(pressed, now);
    return sample && std::exchange(told, sample->value) != sample->value;
  }

  QVValue describe() const {
    return told ? QVValue::array(link, true, QVValue::array(kBumperTouch))
                : QVValue::array(link, false);
  }

  const std::string sensor;
  const std::string link;
  const float halfAperture;

 private:
  FaultChannel<bool> channel;
  bool told = false;
};

TouchUnits::TouchUnits(const Model::Robot& robot, const UnitContext& context)
    : context(context), nonsense(makeGenerator(context.options.seed, "touch garbage")) {
  for (const auto& [name, config] : robot.sensorConfigs) {
    if (config.type != kTouchType) continue;
    bumpers.push_back(std::make_unique<Bumper>(config, context));
  }
  context.memory->declareEvent(kEvent);
}

TouchUnits::~TouchUnits() = default;

std::set<std::string> TouchUnits::update(std::optional<float> contact) {
  const auto now = ko::Clock::now();
  const std::set<std::string> pressed = contact ? xFindPressed(*contact) : std::set<std::string>();
  QVValue::Array changes;
  for (const auto& bumper : bumpers) {
    if (context.faults->find(bumper->sensor, now) == FaultKind::garbage) {
      xRaiseNonsense(*bumper, now);
    } else if (bumper->update(pressed.count(bumper->link) > 0, now)) {
      changes.push_back(bumper->describe());
    }
  }
  if (!changes.empty()) context.memory->raiseEvent(kEvent, changes);
  return pressed;
}

std::set<std::string> TouchUnits::xFindPressed(float contact) const {
  std::set<std::string> pressed;
  std::string nearest;
  float least = std::numeric_limits<float>::infinity();
  for (const auto& bumper : bumpers) {
    const Math::Transform frame = context.surroundings->frameInGround(bumper->sensor);
    const float away = angleBetween(contact, Math::pose2DFromTransform(frame).theta);
    if (away <= bumper->halfAperture) pressed.insert(bumper->link);
    if (away >= least) continue;
    least = away;
    nearest = bumper->link;
  }
  if (pressed.empty() && !nearest.empty()) pressed.insert(nearest);
  return pressed;
}

void TouchUnits::xRaiseNonsense(const Bumper& bumper, ko::Clock::time_point now) {
  if (now < nonsenseDue) return;
  nonsenseDue = now + kNonsensePeriod;
  const std::vector<QVValue> choice{42, QVValue::array(QVValue::array(bumper.link)),
                                    QVValue::array(QVValue::array(bumper.link, "pressed")),
                                    QVValue::array(QVValue::array(bumper.link, true))};
  context.memory->raiseEvent(kEvent, choice[nonsense() % choice.size()]);
}

}  // namespace QV::robot
