// A navigation module of one's own hosts the sensors; another module reads them through the broker.
#include <algorithm>
#include <iostream>
#include <limits>

#include <boost/make_shared.hpp>

#include "platform/ko/simulated_time.h"
#include "platform/middleware/qv_broker.h"
#include "platform/middleware/qv_error.h"
#include "platform/middleware/qv_proxy.h"
#include "robot/maps/map_files.h"
#include "robot/world/virtual_robot.h"
#include "sensor/hosting/navigation_module.h"
#include "sensor/hosting/record_value.h"

using namespace QV;

/** Offers what every hosted robot offers, and one method more. */
class MyNavigation : public sensor::NavigationModule {
 public:
  explicit MyNavigation(const boost::shared_ptr<QVBroker>& broker) : NavigationModule(broker) {
    bindMethod("nearest", &MyNavigation::xNearest, this);
  }

 private:
  /** Metres from the sensor, over all points of a family. */
  float xNearest(const std::string& family) {
    float nearest = std::numeric_limits<float>::infinity();
    for (const auto& record : getManager().getMetricalData(family)) {
      for (const auto& point : record.points) nearest = std::min(nearest, Math::norm(point));
    }
    return nearest;
  }
};

/** Knows the sensors by the name of their module only. */
class Planner : public QVModule {
 public:
  explicit Planner(const boost::shared_ptr<QVBroker>& broker)
      : QVModule("Planner"), navigation(broker, "QVNavigation") {
    navigation.callVoid("subscribe", getName(), std::vector<std::string>{"Laser", "Sonar"});
    bindMethod("plan", &Planner::xPlan, this);
  }
  ~Planner() override {
    try {
      navigation.callVoid("unsubscribeFromAll", getName());
    } catch (const QVError&) {
      // The navigation module went first, and unsubscribed everybody.
    }
  }

 private:
  void xPlan() const {
    const QVValue value = navigation.call<QVValue>("getMetricalData", "Laser");
    for (const auto& record : sensor::recordsFromQVValue(value)) {
      std::cout << record.sensorName << ": " << record.points.size() << " points\n";
    }
    std::cout << "nearest to a sonar: " << navigation.call<float>("nearest", "Sonar") << " m\n";
  }

  const QVProxy navigation;
};

int main() {
  ko::SimulatedTime time;
  const auto map = boost::make_shared<OccupancyMap>(robot::loadMap("maps/apartment.yaml"));
  robot::WorldOptions world;
  world.start = {3.0f, 6.3f, 0.0f};  // m, m, rad
  const robot::VirtualRobot robot("robot/descriptions/porter.urdf", map, world);
  const auto& broker = robot.getBroker();
  const ScopedModule hosting(broker, boost::make_shared<MyNavigation>(broker));
  const ScopedModule planning(broker, boost::make_shared<Planner>(broker));
  time.advance(boost::chrono::milliseconds(300));
  QVProxy(broker, "Planner").callVoid("plan");
}
