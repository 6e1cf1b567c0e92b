#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>

#include "platform/ko/simulated_time.h"
#include "platform/math/transform.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "robot/services/device_manager.h"
#include "tests/support/broker_with_memory.h"

namespace QV::test {

/** A broker that writes down each call, and runs what was planned for it first: a throw, mostly. */
class TracingBroker : public QVBroker {
 public:
  QVValue call(const std::string& module, const std::string& method,
               QVArguments arguments) override {
    calls.push_back(
        {module, method + QVValue(QVValue::Array(arguments.begin(), arguments.end())).toText()});
    const auto found = plans.find(module + "." + method);
    if (found != plans.end()) found->second();
    return QVBroker::call(module, method, arguments);
  }

  /** From now on, for "Module.method". */
  void plan(const std::string& method, std::function<void()> what) { plans[method] = what; }
  void planFailure(const std::string& method, const std::string& text) {
    plan(method, [text] { throw std::runtime_error(text); });
  }
  void forgetPlan(const std::string& method) { plans.erase(method); }

  /** What a module was asked so far, as in `getTransform["Front", 1, true]`. */
  std::vector<std::string> callsTo(const std::string& module) const {
    std::vector<std::string> result;
    for (const auto& [name, text] : calls) {
      if (name == module) result.push_back(text);
    }
    return result;
  }

 private:
  std::vector<std::pair<std::string, std::string>> calls;
  std::map<std::string, std::function<void()>> plans;
};

/** A motion service that answers every question of its kind alike, with what it is told. */
class FakeMotion : public QVModule {
 public:
  FakeMotion() : QVModule("QVMotion") {
    bindMethod("getTransform", [this](const std::string&, int, bool) { return transform; });
    bindMethod("_getSensorTransformAtTime",
               [this](const std::string&, ko::Clock::time_point) { return transform; });
    bindMethod("getRobotVelocity", [this] { return velocity; });
  }

  QVValue transform = Math::Transform().toVector();
  QVValue velocity = QVValue::array(0.0f, 0.0f, 0.0f);
};

/** A robot of memory, device manager and fake motion, in simulated time that starts at 10 s. */
struct FakeRobot {
  FakeRobot() {
    broker->registerModule(devices);
    broker->registerModule(motion);
  }

  ko::SimulatedTime time{ko::Clock::time_point(boost::chrono::seconds(10))};
  boost::shared_ptr<TracingBroker> broker = brokerWithMemory<TracingBroker>();
  boost::shared_ptr<robot::DeviceManager> devices =
      boost::make_shared<robot::DeviceManager>(broker);
  boost::shared_ptr<FakeMotion> motion = boost::make_shared<FakeMotion>();
  QVMemoryProxy memory{broker};
};

/** A time in nanoseconds. */
inline ko::Clock::time_point at(std::int64_t nanoseconds) {
  return ko::Clock::time_point(ko::Duration(nanoseconds));
}

/** A frame tilted and turned, off the ground: nothing about it is the identity. */
inline Math::Transform tiltedFrame() {
  return Math::Transform::fromPosition({0.1f, -0.2f, 0.3f}) *
         Math::rotationFrom3DRotation(0.1f, 0.2f, 0.7f);
}

}  // namespace QV::test
