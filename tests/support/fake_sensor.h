#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>

#include "sensor/core/sensor_manager.h"

namespace QV::test {

/** A sensor whose hardware is a pair of switches, and which counts what is asked of it. */
class FakeSensor : public sensor::Sensor {
 public:
  FakeSensor(const std::string& name, const std::string& family)
      : Sensor(name, family, Math::SensorFieldOfView2D(0.1f, 2.0f, 1.0f, 5)) {}

  bool subscribeSucceeds = true;
  bool unsubscribeSucceeds = true;
  /** Called at the start of each hardware call and each reading; may throw. */
  std::function<void()> onStart = [] {};
  std::function<void()> onStop = [] {};
  std::function<void()> onRead = [] {};

  /** The points that a reading measures, and when. */
  std::vector<Math::Position3D> points{{1.0f, 2.0f, 3.0f}};
  std::function<ko::Clock::time_point()> stamp = [] { return ko::Clock::time_point(); };
  bool hasRecord = true;

  std::atomic<int> starts{0};
  std::atomic<int> stops{0};
  std::atomic<bool> hardwareOn{false};

 protected:
  std::vector<Math::MetricalData> xGetData() const override {
    onRead();
    std::vector<Math::MetricalData> records;
    if (hasRecord) records.push_back({name, familyName, fieldOfView, {}, points, stamp()});
    return records;
  }

  bool xSubscribeToHardware() override {
    ++starts;
    onStart();
    hardwareOn = subscribeSucceeds;
    return subscribeSucceeds;
  }

  bool xUnsubscribeFromHardware() override {
    ++stops;
    onStop();
    hardwareOn = !unsubscribeSucceeds;
    return unsubscribeSucceeds;
  }
};

/** A manager of fake sensors that reads them afresh on each question, and notes what it is told. */
class FakeManager : public sensor::SensorManager {
 public:
  boost::shared_ptr<FakeSensor> add(const std::string& name, const std::string& family) {
    auto sensor = boost::make_shared<FakeSensor>(name, family);
    sensors[name] = sensor;
    families[family].insert(name);
    return sensor;
  }
  void addFamilyMember(const std::string& family, const std::string& name) {
    families[family].insert(name);
  }

  void setSensorsDebug(bool) override {}

  std::vector<bool> anySensorOn;

  using SensorManager::xSubscribeToFamily;
  using SensorManager::xUnsubscribeFromFamily;
  using SensorManager::xUpdateData;

 protected:
  std::vector<Math::MetricalData> xGetData() const override {
    xUpdateData();
    return xCopyData();
  }
  void xOnSensorOnChanged(bool on) override { anySensorOn.push_back(on); }
};

inline std::vector<std::string> namesOf(const std::vector<Math::MetricalData>& records) {
  std::vector<std::string> result;
  for (const auto& record : records) result.push_back(record.sensorName);
  return result;
}

}  // namespace QV::test

namespace QV {
using test::namesOf;
}
