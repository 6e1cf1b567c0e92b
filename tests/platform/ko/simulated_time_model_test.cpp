#include <map>
#include <stdexcept>

#include "platform/ko/clock.h"
#include "platform/ko/internal/event_loop.h"
#include "platform/ko/periodic_task.h"
#include "tests/platform/ko/timeline.h"
#include "tests/support/model_check.h"
#include "tests/support/model_time.h"

// Tasks, posts and delayed calls, which start, stop, wait for and sleep in each other at random,
// beside a model of them.
namespace ko::time_model {
namespace {

using QV::test::textOf;

enum Kind { post, delay, cancel, await, start, doze, stop, configure, sleep, until, fail };

/** What may be done at once, or by a call in its turn. */
struct Operation {
  template <typename World>
  void operator()(World& w) const {
    if (kind == post) w.post();
    if (kind == delay) w.delay(future, ms);
    if (kind == cancel) w.cancel(future);
    if (kind == await) w.await(future);
    if (kind == start || kind == doze) w.start(task, on);
    if (kind == configure) w.configure(task, ms, on);
    if (kind == sleep || kind == doze) w.sleep(ms);
    if (kind == stop || (kind == doze && ms % 2 == 1)) w.stop(task);
    if (kind == until) w.see(textOf("reached", w.runUntilTwoCalls(ms)));
    if (kind == fail && on) throw 42;
    if (kind == fail) throw std::runtime_error("broke");
  }
  std::string toText() const { return textOf(kind, task, future, ms, on); }

  Kind kind;
  std::string task;
  std::string future;
  int ms;
  bool on;
};

struct World : QV::test::LogWitness {
  World() {
    for (const std::string name : {"T", "U"}) {
      tasks[name].setName(name);
      configure(name, 10, false);
    }
  }

  void call(const std::string& name) {
    ++calls;
    see(textOf(name, Clock::toInt32ms(Clock::now())));
    if (const auto reaction = reactions.extract(name)) reaction.mapped()(*this);
  }
  void post() {
    getEventLoop().post([this] { call("P"); });
  }
  void delay(const std::string& name, int ms) {
    futures[name] = getEventLoop().asyncDelay([this, name] { call(name); }, milliseconds(ms));
  }
  void cancel(const std::string& name) { futures[name].cancel(); }
  void await(const std::string& name) { futures[name].wait(); }
  void start(const std::string& name, bool atOnce) { tasks[name].start(atOnce); }
  void stop(const std::string& name) { tasks[name].stop(); }
  void configure(const std::string& name, int ms, bool compensate) {
    tasks[name].setPeriod(milliseconds(ms));
    tasks[name].compensateCallbackTime(compensate);
    tasks[name].setCallback([this, name, ms] {
      see(textOf("with", ms));
      call(name);
    });
  }
  void sleep(int ms) { os::msleep(ms); }
  bool runUntilTwoCalls(int ms) {
    return time.runUntil([this, enough = calls + 2] { return calls >= enough; }, milliseconds(ms));
  }
  void react(const std::string& name, const Operation& operation) { reactions[name] = operation; }

  void showState() {
    for (const std::string name : {"T", "U"}) see(textOf(name, tasks[name].isRunning()));
    for (const std::string name : {"F", "G"}) {
      see(textOf(name, futures[name].isFinished(), futures[name].isCanceled()));
    }
    see(textOf("at", Clock::toInt32ms(Clock::now())));
  }

  SimulatedTime time;
  std::map<std::string, PeriodicTask> tasks;
  std::map<std::string, Future<void>> futures;
  std::map<std::string, Operation> reactions;
  int calls = 0;
};

struct Model : QV::test::TimeModel<Model>, QV::test::Witness {
  enum class Stage { none, waiting, running, finished, canceled };
  struct Call {
    Stage stage = Stage::none;
    Turn turn;
  };
  struct Task {
    int period = 10;
    bool compensate = false;
    bool started = false;
    bool busy = false;
    bool overdue = false;
    int series = 0;
    Turn next;
  };

  void call(const std::string& name, const std::string& failure) {
    ++calls;
    see(textOf(name, now));
    try {
      if (const auto reaction = reactions.extract(name)) reaction.mapped()(*this);
    } catch (const std::exception& error) {
      see("error ko." + failure + error.what());
    } catch (...) {
      see("error ko." + failure + "unknown exception");
    }
  }
  void post() {
    in(0, [](Model& model) { model.call("P", "EventLoop.post: "); });
  }
  void delay(const std::string& name, int ms) {
    const std::size_t index = delayed.size();
    futures[name] = index;
    delayed.push_back({Stage::waiting, in(ms, [name, index](Model& model) {
                         model.delayed[index].stage = Stage::running;
                         model.call(name, "EventLoop.asyncDelay: ");
                         model.delayed[index].stage = Stage::finished;
                       })});
  }
  void cancel(const std::string& name) {
    Call& call = delayed[futures[name]];
    if (call.stage != Stage::waiting) return;
    call.stage = Stage::canceled;
    queue.erase(call.turn);
  }
  void await(const std::string& name) {
    const std::size_t index = futures[name];
    if (index == 0) throw std::logic_error("Future: there is no call to wait for");
    do {
      if (delayed[index].stage == Stage::running)
        throw std::logic_error("Future: the call to wait for is running on this thread");
    } while (delayed[index].stage == Stage::waiting && runNext(1 << 30));
  }

  void start(const std::string& name, bool atOnce) {
    Task& task = tasks[name];
    if (task.period == 0)
      throw std::invalid_argument("PeriodicTask " + name +
                                  ": the period must be positive, not 0 ns");
    stop(name);
    task.started = true;
    task.next.second = ++orders;
    schedule(name, atOnce ? now : now + task.period);
  }
  void stop(const std::string& name) {
    Task& task = tasks[name];
    if (task.started) queue.erase(task.next);
    task.started = task.overdue = false;
    ++task.series;
  }
  void configure(const std::string& name, int ms, bool compensate) {
    if (tasks[name].started)
      throw std::logic_error("PeriodicTask " + name + ": settings can't be changed while it runs");
    tasks[name].period = ms;
    tasks[name].compensate = compensate;
  }
  void schedule(const std::string& name, int due) {
    tasks[name].next.first = due;
    queue[tasks[name].next] = [name, due, series = tasks[name].series](Model& model) {
      model.runTask(name, due, series);
    };
  }
  void runTask(const std::string& name, int due, int series) {
    Task& task = tasks[name];
    if (std::exchange(task.busy, true)) {
      task.overdue = true;
      return;
    }
    see(textOf("with", task.period));
    call(name, "PeriodicTask.run: " + name + ": ");
    task.busy = false;
    if (std::exchange(task.overdue, false)) return schedule(name, now);
    const int next = task.compensate ? std::max(due + task.period, now) : now + task.period;
    if (series == task.series) schedule(name, next);
  }

  bool runUntilTwoCalls(int ms) {
    const int end = now + ms;
    const int enough = calls + 2;
    while (calls < enough && runNext(end)) {
    }
    if (calls < enough) now = std::max(now, end);
    return calls >= enough;
  }
  void react(const std::string& name, const Operation& operation) { reactions[name] = operation; }

  void showState() {
    for (const std::string name : {"T", "U"}) see(textOf(name, tasks[name].started));
    for (const std::string name : {"F", "G"}) {
      const Stage stage = delayed[futures[name]].stage;
      see(textOf(name, stage == Stage::finished, stage == Stage::canceled));
    }
    see(textOf("at", now));
  }

  std::map<std::string, Task> tasks;
  /** Each with its number among the delayed calls; 0 is none. */
  std::map<std::string, std::size_t> futures;
  std::vector<Call> delayed = std::vector<Call>(1);
  std::map<std::string, Operation> reactions;
  int calls = 0;
};

QV::test::AnyStep<Model, World> anyStep() {
  const Operation operation{
      *rc::gen::element(post, delay, delay, delay, cancel, await, start, start, start, doze, doze,
                        stop, configure, sleep, sleep, until, fail),
      *rc::gen::element("T", "U"), *rc::gen::element("F", "G"),
      *rc::gen::element(0, 3, 7, 10, 20, 25), *rc::gen::arbitrary<bool>()};
  const std::string who = *rc::gen::element("", "", "P", "F", "G", "T", "U");
  return QV::test::makeStep<Model, World>(operation.toText() + who, [=](auto& w) {
    if (who.empty()) operation(w);
    if (!who.empty()) w.react(who, operation);
  });
}

TEST(SimulatedTimeModel, callsTimesFuturesAndLogAreAsTheModelSays) {
  QV::test::checkModel<Model, World>(anyStep, 500);
}

}  // namespace
}  // namespace ko::time_model
