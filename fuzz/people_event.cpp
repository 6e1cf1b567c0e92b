/**
 * Any value as a people event, through the people sensor's handler: either one error is logged and
 * the former people stay, or there is a point for each person with finite numbers, as far away as
 * the event says.
 */
#include <cmath>

#include <boost/make_shared.hpp>

#include "fuzz/value_decoder.h"
#include "platform/ko/log.h"
#include "platform/ko/simulated_time.h"
#include "platform/middleware/internal/value_utils.h"
#include "sensor/perception/internal/people_perception_sensor.h"

namespace QV::fuzz {
namespace {

constexpr int kCamera = 2;
const Math::SensorFieldOfView2D kFieldOfView(0.4f, 4.0f, 1.0f, 320);

/** Any value; after a bool, values in the outer form of an event, which are seldom made by chance.
 */
QVValue decodeEvent(ValueDecoder bytes) {
  const QVValue first = bytes.next();
  if (!first.isBool()) return first;
  QVValue::Array event = {QVValue::array(bytes.next(), bytes.next())};
  while (event.size() < 5) event.push_back(bytes.next());
  return event;
}

/** Makes what the sensor asks of a robot, with a camera of index kCamera alone. */
boost::shared_ptr<QVBroker> makeRobot() {
  const auto broker = QVBroker::create();
  const auto add = [&](const char* module, const char* method, const auto& answer) {
    const auto added = boost::make_shared<QVModule>(module);
    added->bindMethod(method, answer);
    broker->registerModule(added);
  };
  add("DCM", "getTime", [](int) { return 0; });
  add("QVMemory", "subscribeToMicroEvent",
      [](const QVValue&, const QVValue&, const QVValue&, const QVValue&) {});
  add("QVMotion", "_getSensorTransformAtTime",
      [](const std::string&, ko::Clock::time_point) { return Math::Transform().toVector(); });
  add("QVVideoDevice", "getCameraName", [](int index) -> std::string {
    if (index != kCamera) throw std::runtime_error("no such camera");
    return "camera";
  });
  return broker;
}

class PeopleFuzzer {
 public:
  PeopleFuzzer() {
    ko::log::setLevel(ko::log::Level::silent);
    sensor.subscribe("fuzzer");
  }

  void checkEvent(const QVValue& event) {
    const Math::MetricalData former = xRead();
    errors = 0;
    sensor.onUpdatePeopleList("", event, "");
    if (errors == 0) return xCheckRecord(event);
    check(errors == 1 && xRead() == former, "a refused event changes something");
  }

 private:
  Math::MetricalData xRead() const {
    const auto records = sensor.getData();
    check(records.size() == 1, "not one record");
    return records.front();
  }

  void xCheckRecord(const QVValue& event) const {
    const Math::MetricalData record = xRead();
    check(event.getSize() == 5 && event[0].getSize() == 2, "an event of another form");
    check(event[4].isInt() && event[4].toInt() == kCamera, "another camera");
    const auto stamp = ValueUtils::extractDuration(event[0][0], event[0][1], "");
    check(record == Math::MetricalData{"People", "Asus", kFieldOfView, Math::Transform(),
                                       record.points, stamp},
          "a record that is not this event's");
    QVValue::Array people = event[1].toArray();
    std::erase_if(people, [](const QVValue& person) {
      return !std::isfinite(person[1].toFloat()) || !std::isfinite(person[2].toFloat()) ||
             !std::isfinite(person[3].toFloat());
    });
    check(record.points.size() == people.size(), "not a point for each person");
    for (std::size_t i = 0; i < people.size(); ++i) {
      const Math::Position3D& point = record.points[i];
      const double expected = std::abs(people[i][1].toDouble());
      const double distance = std::hypot(double{point.x}, double{point.y}, double{point.z});
      check(std::abs(distance - expected) <= 1e-5 * expected + 1e-37, "another distance");
    }
  }

  ko::SimulatedTime time;
  int errors = 0;
  ko::log::ScopedSink sink{ko::log::Level::error, [this](const ko::log::Record&) { ++errors; }};
  boost::shared_ptr<QVBroker> broker = makeRobot();
  sensor::PeoplePerceptionSensor sensor{"People", "Asus", kFieldOfView, {}, broker};
};

}  // namespace
}  // namespace QV::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static QV::fuzz::PeopleFuzzer fuzzer;
  fuzzer.checkEvent(QV::fuzz::decodeEvent({data, size}));
  return 0;
}
