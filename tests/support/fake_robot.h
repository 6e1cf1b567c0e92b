#pragma once

#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>

#include "platform/ko/simulated_time.h"
#include "platform/math/transform.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "robot/services/internal/device_manager.h"
#include "sensor/core/sensor.h"
#include "tests/support/broker_with_memory.h"
#include "tests/support/log_capture.h"
#include "tests/support/vocabulary.h"

namespace QV {
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();
}  // namespace QV

namespace QV::test {

/** A broker that writes down each call, and first does what was planned for it: throw, mostly. */
class TracingBroker : public QVBroker {
 public:
  QVValue call(const std::string& module, const std::string& method,
               QVArguments arguments) override {
    const QVValue list = QVValue::Array(arguments.begin(), arguments.end());
    const auto plan = note(module, method, list);
    const std::optional<QVValue> answer = plan ? (*plan)() : std::nullopt;
    return answer ? *answer : QVBroker::call(module, method, arguments);
  }

  /** Plans for "Module.method" from now on; an empty plan takes it back. */
  void plan(const std::string& method, std::function<void()> what) {
    put(method, [what] {
      if (what) what();
      return std::nullopt;
    });
  }
  /** Lets "Module.method" answer this from now on, without being called. */
  void planAnswer(const std::string& method, const QVValue& answer) {
    put(method, [answer] { return answer; });
  }
  void planFailure(const std::string& method, const std::string& text) {
    plan(method, [text] { throw std::runtime_error(text); });
  }

  /** Returns what a module was asked so far, as in `getTransform["Front", 1, true]`. */
  std::vector<std::string> callsTo(const std::string& module) const {
    std::lock_guard<std::mutex> lock(mutex);
    std::vector<std::string> result;
    for (const auto& [name, text] : calls) {
      if (name == module) result.push_back(text);
    }
    return result;
  }

 private:
  using Plan = std::function<std::optional<QVValue>()>;

  void put(const std::string& method, Plan plan) {
    std::lock_guard<std::mutex> lock(mutex);
    plans[method] = std::make_shared<Plan>(std::move(plan));
  }

  /** Writes the call down; what was planned for it, or null. */
  std::shared_ptr<Plan> note(const std::string& module, const std::string& method,
                             const QVValue& list) {
    std::lock_guard<std::mutex> lock(mutex);
    calls.push_back({module, method + list.toText()});
    const auto found = plans.find(module + "." + method);
    return found == plans.end() ? nullptr : found->second;
  }

  mutable std::mutex mutex;
  std::vector<std::pair<std::string, std::string>> calls;
  std::map<std::string, std::shared_ptr<Plan>> plans;
};

/** A motion service that answers every question of its kind alike, with what it is told. */
struct FakeMotion : QVModule {
  FakeMotion() : QVModule("QVMotion") {
    bindMethod("getTransform", [this](const std::string&, int, bool) { return transform; });
    bindMethod("_getSensorTransformAtTime",
               [this](const std::string&, ko::Clock::time_point) { return transform; });
    bindMethod("getRobotVelocity", [this] { return velocity; });
  }

  QVValue transform = Math::Transform().toVector();
  QVValue velocity = std::vector<float>(3, 0.0f);
};

/** A robot of memory, device manager and fake motion, in simulated time that starts at 100 ms. */
struct FakeRobotTest : testing::Test {
  FakeRobotTest() {
    broker->registerModule(devices);
    broker->registerModule(motion);
  }

  /** Returns what a sensor, started for this if need be, reads. */
  static std::vector<Math::MetricalData> readOf(sensor::Sensor& sensor) {
    sensor.subscribe("test");
    return sensor.getData();
  }

  ko::SimulatedTime time{ko::Clock::time_point(boost::chrono::milliseconds(100))};
  boost::shared_ptr<TracingBroker> broker = brokerWithMemory<TracingBroker>();
  boost::shared_ptr<robot::DeviceManager> devices =
      boost::make_shared<robot::DeviceManager>(broker);
  boost::shared_ptr<FakeMotion> motion = boost::make_shared<FakeMotion>();
  QVMemoryProxy memory{broker};
  LogCapture log;
};

/** Off the ground at (0.1, -0.2, 0.3), tilted, with a heading of 0.7. */
inline Math::Transform tiltedFrame() {
  return Math::Transform::fromPosition({0.1f, -0.2f, 0.3f}) *
         Math::rotationFrom3DRotation(0.0f, 0.2f, 0.7f);
}

/** True if two frames agree to a millionth. */
MATCHER_P(IsNearFrame, expected, "") {
  for (std::size_t i = 0; i < arg.values.size(); ++i) {
    if (!(std::abs(arg.values[i] - expected.values[i]) < 1e-6f)) return false;
  }
  return true;
}

}  // namespace QV::test
