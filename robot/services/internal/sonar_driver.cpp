#include "robot/services/internal/sonar_driver.h"

#include <utility>

#include "platform/ko/internal/call_lock.h"
#include "platform/ko/log.h"
#include "platform/middleware/contracts/sonar_contract.h"
#include "platform/middleware/qv_error.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "platform/model/sensor_properties.h"
#include "robot/services/internal/sonar_config.h"

namespace QV::robot {
namespace {

float maxRangeOf(const Model::SensorConfig& config) {
  return Model::SensorProperties(config).getNumber("maximumDetectionDistance");
}

}  // namespace

SonarDriver::SonarDriver(const boost::shared_ptr<QVBroker>& broker, const Model::Robot& robot,
                         ko::Duration period)
    : QVModule(SonarContract::kModule), broker(broker), runsAlways(robot.kindCode != 0) {
  for (const auto& [name, config] : robot.sensorConfigs) {
    if (!isSonar(config)) continue;
    sonars.push_back({name, config.memoryKeys[0], maxRangeOf(config) + kNoEchoMargin, {}});
  }
  bindMethod(SonarContract::kSubscribe, &SonarDriver::xSubscribe, this);
  bindMethod(SonarContract::kUnsubscribe, &SonarDriver::xUnsubscribe, this);
  task.setName(SonarContract::kModule);
  task.setPeriod(period);
  task.compensateCallbackTime(true);
  task.setCallback([this] { xMeasureAll(); });
  if (runsAlways) task.start(true);
}

SonarDriver::~SonarDriver() = default;

void SonarDriver::setSource(Source newSource) {
  std::lock_guard<std::mutex> lock(sourceMutex);
  source = std::move(newSource);
}

void SonarDriver::xSubscribe(const std::string& name) {
  ko::detail::CallLock lock(subscriptionMutex, SonarContract::kSubscribe, name);
  ++subscriptions[name];
  if (!task.isRunning()) task.start(true);
}

void SonarDriver::xUnsubscribe(const std::string& name) {
  ko::detail::CallLock lock(subscriptionMutex, SonarContract::kUnsubscribe, name);
  const auto found = subscriptions.find(name);
  if (found == subscriptions.end()) {
    throw QVError(SonarContract::kModule, SonarContract::kUnsubscribe,
                  "\"" + name + "\" is not subscribed");
  }
  if (--found->second == 0) subscriptions.erase(found);
  if (subscriptions.empty() && !runsAlways) task.stop();
}

void SonarDriver::xMeasureAll() {
  Source measure;
  {
    std::lock_guard<std::mutex> lock(sourceMutex);
    measure = source;
  }
  if (!measure) return;
  for (Sonar& sonar : sonars) xMeasure(sonar, measure);
}

// A sonar is measured ten times a second: only a change is news.
void SonarDriver::xMeasure(Sonar& sonar, const Source& measure) const {
  std::string failure;
  try {
    const float range = measure(sonar.name).value_or(sonar.noEcho);
    QVMemoryProxy(broker.lock()).insertData(sonar.key, range);
  } catch (const std::exception& error) {
    failure = error.what();
  } catch (...) {
    failure = "unknown failure";
  }
  if (failure != sonar.lastFailure && !failure.empty()) {
    ko::log::error(SonarContract::kModule, "measure") << sonar.name << ": " << failure;
  }
  sonar.lastFailure = failure;
}

}  // namespace QV::robot
