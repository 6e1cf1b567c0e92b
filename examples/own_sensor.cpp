// A sensor class of one's own, in a manager of one's own: two infrared range finders.
#include <functional>
#include <iostream>

#include <boost/make_shared.hpp>

#include "sensor/core/scoped_subscription.h"
#include "sensor/core/sensor_manager.h"

using namespace QV;

/** A range straight ahead, by a device that is switched on while somebody wants it. */
class InfraredSensor : public sensor::Sensor {
 public:
  /** Metres. */
  using Device = std::function<float()>;

  InfraredSensor(const std::string& name, const Math::Pose2D& mounting, Device device)
      : Sensor(name, "Infrared", Math::SensorFieldOfView2D(0.05f, 0.8f, 0.0f, 1)),
        transform(Math::transformFromPose2D(mounting)),
        device(std::move(device)) {}

 protected:
  bool xSubscribeToHardware() override {
    std::cout << name << " on\n";
    return true;  // False when that fails: the sensor's diagnosis is then bad.
  }
  bool xUnsubscribeFromHardware() override {
    std::cout << name << " off\n";
    return true;
  }
  std::vector<Math::MetricalData> xGetData() const override {
    Math::MetricalData record{name, familyName, fieldOfView, transform, {}, ko::Clock::now()};
    const float range = device();
    if (range < fieldOfView.maxRange) record.points = {Math::Position3D(range, 0.0f, 0.0f)};
    return {record};
  }

 private:
  const Math::Transform transform;
  const Device device;
};

/** Measures whenever somebody reads. A manager with a cache calls xUpdateData in a task instead. */
class MyManager : public sensor::SensorManager {
 public:
  MyManager() {
    xAdd(boost::make_shared<InfraredSensor>("Left", Math::Pose2D(0.2f, 0.1f, 0.5f),
                                            [] { return 0.35f; }));
    xAdd(boost::make_shared<InfraredSensor>("Right", Math::Pose2D(0.2f, -0.1f, -0.5f),
                                            [] { return 0.95f; }));
  }
  void setSensorsDebug(bool) override {}

 protected:
  std::vector<Math::MetricalData> xGetData() const override {
    xUpdateData();
    return xCopyData();
  }
  void xOnSensorOnChanged(bool) override {}

 private:
  void xAdd(const boost::shared_ptr<sensor::Sensor>& sensor) {
    sensors.emplace(sensor->getName(), sensor);
    families[sensor->getFamilyName()].insert(sensor->getName());
  }
};

int main() {
  MyManager manager;
  const sensor::ScopedSubscription subscription(manager, "my navigation");
  for (const auto& record : manager.getMetricalData("Infrared")) {
    std::cout << record.sensorName << ": " << record.points.size() << " points\n";
  }
}
