#include "robot/world/units/people_unit.h"

#include <algorithm>
#include <cmath>

#include "robot/world/internal/generator.h"
#include "robot/world/units/sensor_properties.h"

namespace QV::robot {
namespace {

constexpr char kEvent[] = "PeoplePerception/PeopleDetected";
constexpr float kHeadHeight = 1.6f;
constexpr float kFalsePeopleShare = 0.6f;
constexpr std::int64_t kNsPerWholeSecond = 1'000'000'000;

QVValue toStamp(ko::Clock::time_point time) {
  const std::int64_t count = time.time_since_epoch().count();
  return QVValue::array(count / kNsPerWholeSecond, count % kNsPerWholeSecond / 1000);
}

}  // namespace

PeopleUnit::PeopleUnit(const Model::SensorConfig& camera, const std::string& cameraName,
                       int cameraIndex, const UnitContext& context)
    : frame(cameraName),
      cameraIndex(cameraIndex),
      halfFOV(0.5f * angleOf(camera, "horizontalAngularRange")),
      maxRange(numberOf(camera, "maximumDetectionDistance")),
      context(context),
      noise(context.options, kPeoplePerception),
      nonsense(makeGenerator(context.options.seed, "people garbage")),
      channel(
          context.faults, kPeoplePerception, [](const Detections& found) { return found; },
          [](const Detections& found) {
            Detections moved = found;
            for (Detection& person : moved) {
              person.distance *= kFalsePeopleShare;
              person.aboutZ = -person.aboutZ;
            }
            return moved;
          }) {
  context.surroundings->frameInGround(frame);
  context.memory->declareEvent(kEvent);
}

void PeopleUnit::report(ko::Clock::time_point now) {
  if (!context.memory->hasSubscribers(kEvent)) return;
  const auto sample = channel.pass(xFind(), now);
  if (context.faults->find(kPeoplePerception, now) == FaultKind::garbage) return xRaiseNonsense();
  if (!sample || (sample->value.empty() && !toldOfSomebody)) return;
  toldOfSomebody = !sample->value.empty();
  QVValue::Array people;
  for (const Detection& person : sample->value) {
    people.push_back(QVValue::array(person.number, person.distance, person.aboutY, person.aboutZ));
  }
  context.memory->raiseEvent(kEvent, QVValue::array(toStamp(sample->time), people, QVValue::Array(),
                                                    QVValue::Array(), cameraIndex));
}

PeopleUnit::Detections PeopleUnit::xFind() {
  const Moment moment = context.surroundings->getMoment();
  const Math::Transform camera = context.surroundings->frameInMap(frame, moment);
  Detections found;
  for (std::size_t i = 0; i < moment.people.size(); ++i) {
    if (const auto person = xDetect(i, camera, moment.people)) found.push_back(*person);
  }
  return found;
}

std::optional<PeopleUnit::Detection> PeopleUnit::xDetect(std::size_t person,
                                                         const Math::Transform& camera,
                                                         const People& people) {
  const Math::Position3D head(people[person], kHeadHeight);
  const Math::Position3D eye = Math::position3DFromTransform(camera);
  const Math::Position3D seen = Math::inverse(camera) * head;
  const float distance = norm(seen);
  const float aboutZ = std::atan2(seen.y, seen.x);
  if (distance > maxRange || distance < kPersonRadius || std::abs(aboutZ) > halfFOV) return {};
  const Ray ray{
      eye, {(head.x - eye.x) / distance, (head.y - eye.y) / distance, (head.z - eye.z) / distance}};
  People others = people;
  others.erase(others.begin() + static_cast<std::ptrdiff_t>(person));
  if (!std::isinf(context.surroundings->getScene().castRay(ray, distance, others))) return {};
  const float measured = noise.apply(distance);
  if (std::isinf(measured)) return {};
  return Detection{static_cast<int>(person), measured, -std::asin(seen.z / distance), aboutZ};
}

void PeopleUnit::xRaiseNonsense() {
  const std::vector<QVValue> choice{"nobody", QVValue::array(1, 2, 3),
                                    QVValue::array(QVValue::array(1, 2, 3), 4, 5, 6, 7)};
  context.memory->raiseEvent(kEvent, choice[nonsense() % choice.size()]);
}

}  // namespace QV::robot
