// A robot of one's own: four modules on a broker stand for its drivers, a sonar's and a laser's.
#include <iostream>
#include <map>
#include <mutex>

#include <boost/make_shared.hpp>

#include "platform/middleware/contracts/device_manager_contract.h"
#include "platform/middleware/contracts/memory_contract.h"
#include "platform/middleware/contracts/motion_contract.h"
#include "platform/middleware/contracts/robot_model_contract.h"
#include "robot/world/robot_description.h"
#include "sensor/core/scoped_subscription.h"
#include "sensor/real/real_sensor_manager.h"

using namespace QV;

/** The last values of the drivers, which write them from threads of their own. */
struct Memory {
  void write(const std::string& key, float value) {
    const std::lock_guard lock(mutex);
    values[key] = value;
  }
  float read(const std::string& key) {
    const std::lock_guard lock(mutex);
    return values.at(key);  // at() throws for an unknown key; the sensor then has an error.
  }

  std::mutex mutex;
  std::map<std::string, float> values = {{"Sonar/Range", 1.5f}, {"Laser/Mode", 0.0f}};
};

std::int32_t now(int offset) {
  return ko::Clock::toInt32ms(ko::Clock::now()) + offset;
}

boost::shared_ptr<QVBroker> makeRobot(Memory& memory) {
  const auto model = boost::make_shared<QVModule>(RobotModelContract::kModule);
  model->bindMethod(RobotModelContract::kGetConfig, [] {
    return robot::RobotDescription::fromFile("examples/own_robot.urdf").xml;
  });
  const auto keys = boost::make_shared<QVModule>(MemoryContract::kModule);
  keys->bindMethod(MemoryContract::kGetData, &Memory::read, &memory);
  const auto devices = boost::make_shared<QVModule>(DeviceManagerContract::kModule);
  devices->bindMethod(DeviceManagerContract::kGetTime, now);
  devices->bindMethod(DeviceManagerContract::kSet, [&memory](const QVValue& command) {
    memory.write("Laser/Mode", command[2][0][0].toFloat());  // A driver obeys, then says so.
  });
  const auto motion = boost::make_shared<QVModule>(MotionContract::kModule);
  const auto ahead = [](const std::string&, ko::Clock::time_point) {
    return Math::Transform::fromPosition({0.2f, 0.0f, 0.1f}).toVector();  // The sensors look ahead.
  };
  motion->bindMethod(MotionContract::kGetSensorTransformAtTime, ahead);
  const auto broker = QVBroker::create();
  for (const auto& module : {model, keys, devices, motion}) broker->registerModule(module);
  return broker;
}

int main() {
  Memory memory;
  for (auto key : {"Laser/0/X", "Laser/0/Y", "Laser/1/X", "Laser/1/Y"}) memory.write(key, 1.2f);
  memory.write("Laser/Time", static_cast<float>(now(50)));
  sensor::RealSensorManager manager(makeRobot(memory));
  const sensor::ScopedSubscription subscription(manager, "my navigation");
  subscription.awaitRecords(boost::chrono::seconds(2));
  for (const auto& record : manager.getMetricalData())
    std::cout << record.sensorName << ": " << Math::pointsInFrame(record).front().x << " m ahead\n";
}
