#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <tuple>

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

#include "platform/ko/clock.h"

namespace ko::detail {

/** A call that waits for its time. A scheduler runs it or drops it, once, with no lock held. */
class Job {
 public:
  virtual ~Job() = default;

  /** `due` is the time that the job was scheduled for. Must not throw. */
  virtual void run(Clock::time_point due) = 0;

  /** Drops the job: its time will never come. */
  virtual void drop() = 0;
};

/** The place of a waiting job in the queue: by time, then by start. No two jobs have the same
 * place. */
struct Turn {
  Clock::time_point due;
  std::uint64_t order = 0;

  bool operator<(const Turn& other) const {
    return std::tie(due, order) < std::tie(other.due, other.order);
  }
};

using JobQueue = std::map<Turn, boost::shared_ptr<Job>>;

/** The order of the next start; each number is used once. */
std::uint64_t nextOrder();

/** Runs calls at their time, on the real clock or a simulated one. Thread-safe. */
class Scheduler {
 public:
  virtual ~Scheduler() = default;

  virtual bool isSimulated() const = 0;
  virtual Clock::time_point now() const = 0;

  /** Runs `call` as soon as possible. Its exceptions are not caught. */
  virtual void post(boost::function<void()> call) = 0;

  /** Schedules a job. False, and the job is neither run nor dropped, after the scheduler's time has
   * ended. */
  virtual bool schedule(const Turn& turn, boost::shared_ptr<Job> job) = 0;

  /** Removes a waiting job. It may be running already; the job itself must know. */
  virtual void withdraw(const Turn& turn) = 0;

  virtual void sleep(Duration duration) = 0;

  /** Runs the next waiting job if this thread may run it; false if it may not, or if none waits. */
  virtual bool runNext() = 0;
};

/** Returns the present scheduler: the real one, unless a SimulatedTime has taken over. */
boost::shared_ptr<Scheduler> currentScheduler();

/** Returns the thread pool. It starts at the first use and lives as long as the process. */
boost::shared_ptr<Scheduler> machineScheduler();

class SimulatedScheduler;

/** Makes `scheduler` the present one; null restores the real one. */
void installScheduler(boost::shared_ptr<SimulatedScheduler> scheduler);

/** Runs `call`; logs an exception as an error with `prefix` in front. */
void callGuarded(const boost::function<void()>& call, const char* category, const char* method,
                 const std::string& prefix = std::string());

}  // namespace ko::detail
