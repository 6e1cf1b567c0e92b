#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <tuple>

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

#include "platform/ko/clock.h"

namespace ko::detail {

/** A call that waits for its time: a scheduler runs it or drops it, once and with no lock held. */
class Job {
 public:
  virtual ~Job() = default;

  /** `due` is the time that the job was scheduled for. Must not throw. */
  virtual void run(Clock::time_point due) = 0;

  /** The job's time will never come. */
  virtual void drop() = 0;
};

/** The place of a waiting job: by time, then by start. At most one job waits for a turn. */
struct Turn {
  Clock::time_point due;
  std::uint64_t order = 0;

  bool operator<(const Turn& other) const {
    return std::tie(due, order) < std::tie(other.due, other.order);
  }
};

using JobQueue = std::map<Turn, boost::shared_ptr<Job>>;

/** The order of what starts next; each is given once. */
std::uint64_t nextOrder();

/** Runs calls at their time, by the machine's clock or by a simulated one. Thread-safe. */
class Scheduler {
 public:
  virtual ~Scheduler() = default;

  virtual bool isSimulated() const = 0;
  virtual Clock::time_point now() const = 0;

  /** Runs `call` as soon as possible. What it throws is not caught. */
  virtual void post(boost::function<void()> call) = 0;

  /** False, and the job is neither run nor dropped, once the scheduler's time has ended. */
  virtual bool schedule(const Turn& turn, boost::shared_ptr<Job> job) = 0;

  /** Takes a waiting job back. It may be under way already: the job itself must know. */
  virtual void withdraw(const Turn& turn) = 0;

  virtual void sleep(Duration duration) = 0;

  /** Runs the next waiting job if that is this thread's to do; false if it is not, or none waits.
   */
  virtual bool runNext() = 0;
};

/** The one in force: the machine's, unless a SimulatedTime has taken over. */
boost::shared_ptr<Scheduler> currentScheduler();

/** The thread pool; it starts at the first use and lives as long as the process. */
boost::shared_ptr<Scheduler> machineScheduler();

/** Puts `scheduler` in force, or the machine's again if it is null. */
void installScheduler(boost::shared_ptr<Scheduler> scheduler);

/** Runs `call`; what it throws becomes a line at error level that starts with `prefix`. */
void callGuarded(const boost::function<void()>& call, const char* category, const char* method,
                 const std::string& prefix = std::string());

}  // namespace ko::detail
