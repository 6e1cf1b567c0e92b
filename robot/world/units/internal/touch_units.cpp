#include "robot/world/units/internal/touch_units.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <optional>
#include <utility>

#include "platform/middleware/contracts/navigation_contract.h"
#include "platform/model/sensor_properties.h"
#include "robot/world/faults/fault_channel.h"

namespace QV::robot {
namespace {

constexpr const char* kTouchEvent = NavigationContract::kTouchChangedEvent;
// The number of this kind of touch in the event.
constexpr int kBumperTouch = 2;
constexpr ko::Duration kGarbagePeriod(500'000'000);

float angleBetween(float a, float b) {
  return std::abs(std::remainder(a - b, 2.0f * std::numbers::pi_v<float>));
}

}  // namespace

class TouchUnits::Bumper {
 public:
  Bumper(const Model::SensorConfig& config, const UnitContext& context)
      : sensor(config.name),
        link(config.parentLink),
        halfAperture(0.5f * Model::SensorProperties(config).getAngle("horizontalAngularRange")),
        faults(context.getFaults(config.name)),
        channel(
            faults, [](bool pressed) { return pressed; }, [](bool pressed) { return !pressed; }) {}

  /** True if the bumper's reported state has changed; a bumper that is off reports nothing. */
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
  const FaultFinder faults;

 private:
  FaultChannel<bool> channel;
  bool told = false;
};

TouchUnits::TouchUnits(const std::vector<Model::SensorConfig>& configs, const UnitContext& context)
    : SensorUnit("bumpers", ko::Duration::zero()), context(context), garbage(context, "touch") {
  for (const Model::SensorConfig& config : configs) {
    bumpers.push_back(std::make_unique<Bumper>(config, context));
  }
  context.declareEvent(kTouchEvent);
}

TouchUnits::~TouchUnits() = default;

void TouchUnits::measure(ko::Clock::time_point now) {
  const auto contact = context.getSurroundings().getMoment().contact;
  const std::set<std::string> pressed = contact ? xFindPressed(*contact) : std::set<std::string>();
  context.getSurroundings().setTouched(pressed);
  QVValue::Array changes;
  for (const auto& bumper : bumpers) {
    if (bumper->faults(now) == FaultKind::garbage) {
      xRaiseGarbage(*bumper, now);
    } else if (bumper->update(pressed.count(bumper->link) > 0, now)) {
      changes.push_back(bumper->describe());
    }
  }
  if (!changes.empty()) context.raiseEvent(kTouchEvent, changes);
}

std::set<std::string> TouchUnits::xFindPressed(float contact) const {
  std::set<std::string> pressed;
  std::string nearest;
  float least = std::numeric_limits<float>::infinity();
  for (const auto& bumper : bumpers) {
    const Math::Transform frame = context.getSurroundings().frameInGround(bumper->sensor);
    const float away = angleBetween(contact, Math::pose2DFromTransform(frame).theta);
    if (away <= bumper->halfAperture) pressed.insert(bumper->link);
    if (away >= least) continue;
    least = away;
    nearest = bumper->link;
  }
  if (pressed.empty() && !nearest.empty()) pressed.insert(nearest);
  return pressed;
}

void TouchUnits::xRaiseGarbage(const Bumper& bumper, ko::Clock::time_point now) {
  if (now < garbageDue) return;
  garbageDue = now + kGarbagePeriod;
  const std::vector<QVValue> choice{42, QVValue::array(QVValue::array(bumper.link)),
                                    QVValue::array(QVValue::array(bumper.link, "pressed")),
                                    QVValue::array(QVValue::array(bumper.link, true))};
  context.raiseEvent(kTouchEvent, garbage.pick(choice));
}

UnitFactory::Units makeTouchUnits(const std::vector<Model::SensorConfig>& configs,
                                  const UnitContext& context) {
  UnitFactory::Units units;
  units.push_back(std::make_unique<TouchUnits>(configs, context));
  return units;
}

}  // namespace QV::robot
