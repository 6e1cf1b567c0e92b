#include <mutex>
#include <thread>
#include <vector>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/make_shared.hpp>

#include "platform/ko/internal/scheduler.h"
#include "platform/ko/internal/time_source.h"

namespace ko::detail {
namespace {

constexpr int kThreadCount = 4;

class MachineScheduler : public Scheduler {
 public:
  MachineScheduler() : work(context.get_executor()), timer(context) {
    for (int i = 0; i < kThreadCount; ++i) threads.emplace_back([this] { context.run(); });
  }

  bool isSimulated() const override { return false; }
  Clock::time_point now() const override { return machineNow(); }

  void post(boost::function<void()> call) override { boost::asio::post(context, std::move(call)); }

  bool schedule(const Turn& turn, boost::shared_ptr<Job> job) override {
    if (turn.due <= now()) {
      xPostJob(turn, std::move(job));
    } else {
      std::lock_guard lock(mutex);
      queue.emplace(turn, std::move(job));
      if (turn.due < armedFor) xArm();
    }
    return true;
  }

  void withdraw(const Turn& turn) override {
    JobQueue::node_type taken;
    std::lock_guard lock(mutex);
    taken = queue.extract(turn);
  }

  void sleep(Duration duration) override {
    std::this_thread::sleep_for(std::chrono::nanoseconds(duration.count()));
  }

  bool runNext() override { return false; }

 private:
  void xPostJob(const Turn& turn, boost::shared_ptr<Job> job) {
    boost::asio::post(context, [due = turn.due, job = std::move(job)] { job->run(due); });
  }

  // A single timer serves all: it is armed for the earliest job. Arming again may leave a handler
  // queued for the former time; it finds nothing due.
  void xArm() {
    armedFor = queue.empty() ? Clock::time_point::max() : queue.begin()->first.due;
    if (queue.empty()) return;
    timer.expires_after(std::chrono::nanoseconds((armedFor - now()).count()));
    timer.async_wait([this](const boost::system::error_code& failure) {
      if (!failure) xRunDue();
    });
  }

  void xRunDue() {
    std::vector<JobQueue::node_type> due;
    {
      std::lock_guard lock(mutex);
      const auto time = now();
      while (!queue.empty() && queue.begin()->first.due <= time) {
        due.push_back(queue.extract(queue.begin()));
      }
      xArm();
    }
    for (std::size_t i = 1; i < due.size(); ++i) xPostJob(due[i].key(), due[i].mapped());
    if (!due.empty()) due.front().mapped()->run(due.front().key().due);
  }

  boost::asio::io_context context;
  boost::asio::executor_work_guard<boost::asio::io_context::executor_type> work;
  std::mutex mutex;
  boost::asio::steady_timer timer;
  Clock::time_point armedFor = Clock::time_point::max();
  JobQueue queue;
  std::vector<std::thread> threads;
};

}  // namespace

boost::shared_ptr<Scheduler> machineScheduler() {
  // Never destroyed: tasks may still be stopped while the process ends.
  static auto* instance = new boost::shared_ptr<Scheduler>(boost::make_shared<MachineScheduler>());
  return *instance;
}

}  // namespace ko::detail
