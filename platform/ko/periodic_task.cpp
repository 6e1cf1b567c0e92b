#include "platform/ko/periodic_task.h"

#include <algorithm>
#include <utility>

#include <boost/make_shared.hpp>

#include "platform/ko/internal/periodic_task_impl.h"

namespace ko {

PeriodicTask::PeriodicTask() : impl(boost::make_shared<Impl>()) {}

PeriodicTask::~PeriodicTask() {
  impl->retire();
}

void PeriodicTask::setName(const std::string& name) {
  impl->configure([&] { impl->name = name; });
}

void PeriodicTask::setCallback(boost::function<void()> callback) {
  auto shared = boost::make_shared<const boost::function<void()>>(std::move(callback));
  // The old callback is destroyed after the lock, because its captures may call back.
  impl->configure([&] { impl->callback.swap(shared); });
}

void PeriodicTask::setUsPeriod(std::int64_t microseconds) {
  const std::int64_t longest = Duration::max().count() / 1000;
  setPeriod(boost::chrono::microseconds(std::clamp(microseconds, -longest, longest)));
}

void PeriodicTask::setPeriod(Duration period) {
  impl->configure([&] { impl->period = period; });
}

void PeriodicTask::compensateCallbackTime(bool compensate) {
  impl->configure([&] { impl->compensate = compensate; });
}

void PeriodicTask::start(bool immediate) {
  impl->start(immediate);
}

void PeriodicTask::stop() {
  impl->stop();
}

bool PeriodicTask::isRunning() const {
  return impl->isRunning();
}

}  // namespace ko
