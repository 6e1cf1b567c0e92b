#include "robot/world/units/internal/people_unit.h"

#include <algorithm>
#include <cmath>

#include "platform/middleware/contracts/navigation_contract.h"
#include "platform/model/sensor_properties.h"
#include "robot/world/scene/internal/person.h"

namespace QV::robot {
namespace {

// The sensor of the manager that no configuration names.
constexpr char kPeoplePerception[] = "PeoplePerception";
constexpr const char* kPeopleEvent = NavigationContract::kPeopleDetectedEvent;
constexpr float kHeadHeight = 1.6f;
constexpr std::int64_t kNsPerWholeSecond = 1'000'000'000;

QVValue toStamp(ko::Clock::time_point time) {
  const std::int64_t count = time.time_since_epoch().count();
  return QVValue::array(count / kNsPerWholeSecond, count % kNsPerWholeSecond / 1000);
}

}  // namespace

PeopleUnit::PeopleUnit(const Model::SensorConfig& camera, const std::string& cameraName,
                       int cameraIndex, const UnitContext& context)
    : SensorUnit(kPeoplePerception, context.getOptions().peoplePeriod),
      frame(cameraName),
      cameraIndex(cameraIndex),
      halfFOV(0.5f * Model::SensorProperties(camera).getAngle("horizontalAngularRange")),
      maxRange(Model::SensorProperties(camera).getFinite("maximumDetectionDistance")),
      context(context),
      noise(context.getOptions(), kPeoplePerception),
      faults(context.getFaults(kPeoplePerception)),
      garbage(context, "people"),
      channel(
          faults, [](const Detections& found) { return found; },
          [](const Detections& found) {
            Detections moved = found;
            for (Detection& person : moved) {
              person.range *= kFalseShare;
              person.aboutZ = -person.aboutZ;
            }
            return moved;
          }) {
  context.getSurroundings().frameInGround(frame);
  context.declareEvent(kPeopleEvent);
  context.addFaultName(kPeoplePerception);
}

void PeopleUnit::measure(ko::Clock::time_point now) {
  if (!context.hasSubscribers(kPeopleEvent)) return;
  const auto sample = channel.pass(xFind(), now);
  if (faults(now) == FaultKind::garbage) return xRaiseGarbage();
  if (!sample || (sample->value.empty() && !toldOfSomebody)) return;
  toldOfSomebody = !sample->value.empty();
  QVValue::Array people;
  for (const Detection& person : sample->value) {
    people.push_back(QVValue::array(person.number, person.range, person.aboutY, person.aboutZ));
  }
  context.raiseEvent(kPeopleEvent, QVValue::array(toStamp(sample->time), people, QVValue::Array(),
                                                  QVValue::Array(), cameraIndex));
}

PeopleUnit::Detections PeopleUnit::xFind() {
  const Moment moment = context.getSurroundings().getMoment();
  const Math::Transform camera = context.getSurroundings().frameInMap(frame, moment);
  Detections found;
  for (std::size_t i = 0; i < moment.people.size(); ++i) {
    if (const auto person = xDetect(i, camera, moment)) found.push_back(*person);
  }
  return found;
}

std::optional<PeopleUnit::Detection> PeopleUnit::xDetect(std::size_t person,
                                                         const Math::Transform& camera,
                                                         const Moment& moment) {
  const Math::Position3D head(moment.people[person], kHeadHeight);
  const Math::Position3D eye = Math::position3DFromTransform(camera);
  const Math::Position3D seen = Math::inverse(camera) * head;
  const float range = norm(seen);
  const float aboutZ = std::atan2(seen.y, seen.x);
  if (range > maxRange || range < kPersonRadius || std::abs(aboutZ) > halfFOV) return {};
  const Ray ray{eye,
                {(head.x - eye.x) / range, (head.y - eye.y) / range, (head.z - eye.z) / range}};
  Moment others = moment;
  others.people.erase(others.people.begin() + static_cast<std::ptrdiff_t>(person));
  if (!std::isinf(context.getSurroundings().castRay(ray, range, others))) return {};
  const float measured = noise.apply(range);
  if (std::isinf(measured)) return {};
  return Detection{static_cast<int>(person), measured, -std::asin(seen.z / range), aboutZ};
}

void PeopleUnit::xRaiseGarbage() {
  const std::vector<QVValue> choice{"nobody", QVValue::array(1, 2, 3),
                                    QVValue::array(QVValue::array(1, 2, 3), 4, 5, 6, 7)};
  context.raiseEvent(kPeopleEvent, garbage.pick(choice));
}

}  // namespace QV::robot
