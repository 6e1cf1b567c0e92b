#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>

#include "platform/api.h"
#include "platform/ko/periodic_task.h"
#include "platform/middleware/qv_module.h"
#include "platform/model/robot.h"

namespace QV {
class QVBroker;
}

namespace QV::robot {

/**
 * The sonar driver, module "QVSonar". It writes the memory key of each sonar of the description
 * (type 9, one key), in metres as a float, at once and then each period: on a robot of kind 0 while
 * somebody is subscribed, on any other kind as long as it lives. No echo is written as the sonar's
 * maximumDetectionDistance plus kNoEchoMargin. "subscribe" takes the name of who wants readings;
 * each calls for an "unsubscribe" with that name, and one too many is a QVError. A range that can't
 * be had or written leaves the key as it is, and is logged when the failure changes. Safe from any
 * thread.
 */
class QV_API SonarDriver : public QVModule {
 public:
  /** Metres. */
  static constexpr float kNoEchoMargin = 1.0f;
  static constexpr ko::Duration kPeriod{100'000'000};

  /**
   * The range in metres that a sonar measures now, or nothing when there is no echo. Called on
   * the event loop's threads; it may throw, and must not call this driver.
   */
  using Source = std::function<std::optional<float>(const std::string& sonar)>;

  SonarDriver(const boost::shared_ptr<QVBroker>& broker, const Model::Robot& robot,
              ko::Duration period = kPeriod);
  ~SonarDriver() override;

  /** Sets the source; without one, as at first, no key is written. */
  void setSource(Source source);

 private:
  struct Sonar {
    std::string name;
    std::string key;
    float noEcho;
    std::string lastFailure;
  };

  void xSubscribe(const std::string& name);
  void xUnsubscribe(const std::string& name);
  void xMeasureAll();
  void xMeasure(Sonar& sonar, const Source& measure) const;

  const boost::weak_ptr<QVBroker> broker;
  const bool runsAlways;
  std::vector<Sonar> sonars;
  std::mutex sourceMutex;
  Source source;
  // Held while the task stops, and so never taken by what the task does.
  std::mutex subscriptionMutex;
  std::map<std::string, int> subscriptions;
  ko::PeriodicTask task;
};

}  // namespace QV::robot
