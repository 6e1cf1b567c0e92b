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
  typedef std::function<bool(const std::string& call)> Meddling;

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
    const QVValue result = robot->call(module, method, arguments);
    note(module, method, arguments, result);
    return result;
  }

  /** How often `what`, a name or a handle, is subscribed at a module; of all of them without. */
  int countSubscriptions(const std::string& module, const std::string& what = "") const {
    std::lock_guard<std::mutex> lock(mutex);
    int sum = 0;
    for (const auto& [key, held] : subscriptions) {
      if (key.first == module && (what.empty() || key.second == what)) sum += held;
    }
    return sum;
  }

 private:
  bool meddles(const std::string& call) const {
    if (++count != chosen) return false;
    ko::log::info("MeddlingBroker", "call") << count << ": " << call;
    return meddling(call);
  }

  void note(const std::string& module, const std::string& method, QVArguments arguments,
            const QVValue& result) {
    if (arguments.empty() || !arguments[0].isString()) return;
    const std::string& what = result.isString() ? result.toString() : arguments[0].toString();
    std::lock_guard<std::mutex> lock(mutex);
    if (method.starts_with("subscribe")) ++subscriptions[{module, what}];
    if (method.starts_with("unsubscribe")) --subscriptions[{module, what}];
  }

  const boost::shared_ptr<QVBroker> robot;
  mutable std::atomic<int> count{0};
  int chosen = std::numeric_limits<int>::max();
  Meddling meddling;
  mutable std::mutex mutex;
  std::map<std::pair<std::string, std::string>, int> subscriptions;
};

}  // namespace QV::test
