#pragma once

#include <atomic>
#include <functional>
#include <limits>
#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "platform/ko/log.h"
#include "platform/middleware/qv_broker.h"
#include "platform/middleware/qv_error.h"

namespace QV::test {

/**
 * A broker that passes each call on to the robot's, but for one, by its number: before that it
 * meddles. Questions whether a module is there count as calls. It remembers what is subscribed.
 */
class MeddlingBroker : public QVBroker {
 public:
  /** Says whether the call fails; may take its time. */
  using Meddling = std::function<bool(const std::string& call)>;

  explicit MeddlingBroker(boost::shared_ptr<QVBroker> robot) : robot(std::move(robot)) {}

  /** Numbers count from 1. */
  void meddleWith(int number, Meddling how) {
    chosen = number;
    meddling = std::move(how);
  }
  bool hasMeddled() const { return count >= chosen; }

  bool isModulePresent(const std::string& name) const override {
    return !meddles("isModulePresent " + name) && robot->isModulePresent(name);
  }

  QVValue call(const std::string& module, const std::string& method,
               QVArguments arguments) override {
    if (meddles(module + "." + method)) throw QVError(module, method, "meddled with");
    QVValue result = robot->call(module, method, arguments);
    note(module, method, arguments);
    return result;
  }

  /** Counts how often a name is subscribed at a module. */
  int countSubscriptions(const std::string& module, const std::string& name) const {
    std::lock_guard<std::mutex> lock(mutex);
    const auto found = subscriptions.find({module, name});
    return found == subscriptions.end() ? 0 : found->second;
  }

 private:
  bool meddles(const std::string& call) const {
    if (++count != chosen) return false;
    ko::log::info("MeddlingBroker", "call") << count << ": " << call;
    return meddling(call);
  }

  void note(const std::string& module, const std::string& method, QVArguments arguments) {
    const int change = method.starts_with("subscribe")     ? 1
                       : method.starts_with("unsubscribe") ? -1
                                                           : 0;
    if (change == 0) return;
    std::lock_guard<std::mutex> lock(mutex);
    subscriptions[{module, arguments[0].toString()}] += change;
  }

  const boost::shared_ptr<QVBroker> robot;
  mutable std::atomic<int> count{0};
  int chosen = std::numeric_limits<int>::max();
  Meddling meddling;
  mutable std::mutex mutex;
  std::map<std::pair<std::string, std::string>, int> subscriptions;
};

}  // namespace QV::test
