#include "sensor/perception/internal/people_perception_sensor.h"

#include <boost/make_shared.hpp>
#include <boost/weak_ptr.hpp>

#include "platform/ko/internal/event_loop.h"
#include "platform/ko/log.h"
#include "platform/middleware/contracts/motion_contract.h"
#include "platform/middleware/contracts/navigation_contract.h"
#include "sensor/perception/internal/people_event.h"

namespace QV::sensor {
namespace {

constexpr char kPeopleCategory[] = "QVNavigation.PeoplePerceptionSensor";
constexpr char kOnUpdate[] = "onUpdatePeopleList";

Math::Position3D positionOf(const PeopleEvent::Person& person) {
  return Math::rotationFrom3DRotation(0.0f, person.angleY, person.angleZ) *
         Math::Position3D(person.distance, 0.0f, 0.0f);
}

}  // namespace

PeoplePerceptionSensor::PeoplePerceptionSensor(const std::string& name,
                                               const std::string& familyName,
                                               const Math::SensorFieldOfView2D& fieldOfView,
                                               const std::vector<std::string>& memoryKeys,
                                               boost::shared_ptr<QVBroker> broker)
    : RealSensor(name, familyName, fieldOfView, memoryKeys, broker),
      videoDevice(broker),
      latest(boost::make_shared<Latest>()),
      pruneDelay(boost::chrono::seconds(2)) {
  xTellOfChanges();
}

PeoplePerceptionSensor::~PeoplePerceptionSensor() = default;

std::vector<Math::MetricalData> PeoplePerceptionSensor::getData() const {
  return RealSensor::getData();
}

std::vector<Math::MetricalData> PeoplePerceptionSensor::xGetData() const {
  {
    std::lock_guard lock(latest->mutex);
    if (latest->lastData) return {*latest->lastData};
  }
  return {xGetMetricalDataMeta()};
}

bool PeoplePerceptionSensor::xSubscribeToHardware() {
  try {
    memoryProxy->subscribeToMicroEvent(fEventName, NavigationContract::kModule, "",
                                       NavigationContract::kOnPeopleDetected);
    return true;
  } catch (const std::exception& exception) {
    xLogError("xSubscribeToHardware",
              std::string("Unable to subscribe to ") + fEventName + ": " + exception.what());
    return false;
  }
}

bool PeoplePerceptionSensor::xUnsubscribeFromHardware() {
  try {
    memoryProxy->unsubscribeToMicroEvent(fEventName, NavigationContract::kModule);
    return true;
  } catch (const std::exception& exception) {
    xLogError("xUnsubscribeFromHardware",
              std::string("Unable to unsubscribe from ") + fEventName + ": " + exception.what());
    return false;
  }
}

void PeoplePerceptionSensor::xLogError(const char* method, const std::string& message) const {
  logTrouble(ko::log::Level::error, kPeopleCategory, method, message);
}

void PeoplePerceptionSensor::onUpdatePeopleList(const std::string&, QVValue value,
                                                const std::string&) {
  PeopleEvent event;
  try {
    event = extractPeopleEvent(value, name);
  } catch (const std::exception& exception) {
    xNoteGarbage();
    xLogError(kOnUpdate, exception.what());
    return;
  }
  const std::size_t leftOut = value[1].getSize() - event.people.size();
  if (leftOut > 0) {
    xNoteGarbage();
    logTrouble(ko::log::Level::warning, kPeopleCategory, kOnUpdate,
               std::to_string(leftOut) + " of " + std::to_string(value[1].getSize()) +
                   " people left out: finite distances and angles expected");
  }
  Math::MetricalData record;
  record.timestamp = event.timestamp;
  try {
    record.sensorTransform = xCameraTransform(event.camera, event.timestamp);
  } catch (const std::exception& exception) {
    xLogError(kOnUpdate, std::string("Unable to get transform: ") + exception.what());
    return;
  }
  record.fieldOfView = fieldOfView;
  record.familyName = familyName;
  record.sensorName = name;
  record.points.reserve(event.people.size());
  for (const auto& person : event.people) record.points.push_back(positionOf(person));
  xStore(std::move(record));
}

Math::Transform PeoplePerceptionSensor::xCameraTransform(int camera,
                                                         ko::Clock::time_point time) const {
  return Math::Transform(motionProxy.getGenericProxy().call<std::vector<float>>(
      MotionContract::kGetSensorTransformAtTime, videoDevice.getCameraName(camera), time));
}

void PeoplePerceptionSensor::xStore(Math::MetricalData record) {
  std::lock_guard lock(latest->mutex);
  latest->lastData = std::move(record);
  const std::uint64_t generation = ++latest->generation;
  pruneFuture.cancel();
  pruneFuture = ko::getEventLoop().asyncDelay(
      [weak = boost::weak_ptr<Latest>(latest), generation] {
        if (const auto alive = weak.lock()) xPruneOldData(*alive, generation);
      },
      pruneDelay);
}

void PeoplePerceptionSensor::xPruneOldData(Latest& latest, std::uint64_t generation) {
  std::lock_guard lock(latest.mutex);
  if (latest.generation == generation) latest.lastData.reset();
}

}  // namespace QV::sensor
