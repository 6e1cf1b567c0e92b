#include <algorithm>
#include <chrono>
#include <future>
#include <iostream>
#include <memory>
#include <unistd.h>
#include <utility>

#include "apps/commands/add_options.h"
#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "apps/commands/output_files.h"
#include "apps/interrupt.h"
#include "apps/output/lines.h"
#include "apps/output/notes.h"
#include "apps/output/quiet_log.h"
#include "apps/silent_sensors.h"
#include "apps/subscriber.h"
#include "apps/terminal/terminal.h"
#include "apps/watch/watch.h"
#include "apps/watch/watch_view.h"
#include "outlets/outlet.h"

namespace QV::app {
namespace {

constexpr int kPeriodMs = 100;
constexpr char kWatchFooter[] =
    "The robot runs in real time; a virtual one drives about meanwhile. Keys choose a sensor and\n"
    "subscribe, enable or diagnose it. The last error of a sensor stays until the next one. Bad\n"
    "sensors are red. The screen updates 10 times a second. Ctrl-Z stops the program, fg "
    "continues\n"
    "it. The exit status of --once is 1 if a subscribed sensor gave no record and is not\n"
    "sound.";

struct WatchOptions : CommonOptions {
  bool once = false;
  bool still = false;
  OutputFiles record;
};

int watchOnce(const WatchOptions& options) {
  const auto session = options.openSession();
  Watch watch(*session);
  session->subscribe(kSubscriber, options.namesFor(*session));
  options.notePose(*session);
  session->run(session->getSettlingTime());
  const WatchState& state = watch.look();
  std::cout << watchTable(state, getLineWidth());
  return reportSilent(findSilent(*session, options.subscriptions, state.seen));
}

// After a long stop (Ctrl-Z) the session does not catch up.
constexpr ko::Duration kMostAtOnce{1'000'000'000};

/** The machine's time since the last call. */
ko::Duration passedSince(std::chrono::steady_clock::time_point& last) {
  const auto now = std::chrono::steady_clock::now();
  const auto passed = std::chrono::nanoseconds(now - std::exchange(last, now));
  return std::min(ko::Duration(passed.count()), kMostAtOnce);
}

void watchIn(Terminal& terminal, Watch& watch, session::Session& session,
             outlets::OutletList& files, bool hasOwnTime) {
  auto last = std::chrono::steady_clock::now();
  for (bool on = true; on && !isInterrupted();) {
    terminal.show(watchScreen(watch.look(), terminal.getSize()));
    for (const Key key : terminal.readKeys(kPeriodMs)) on = on && watch.press(key);
    if (!hasOwnTime) continue;
    session.keepPace(passedSince(last));
    files.show(session.look());
  }
}

// A recorded session runs in simulated time, because only that can be replayed; a robot on a graph
// in the graph's time. False if the recording is incomplete.
bool watchOn(WatchOptions& options) {
  checkTerminal(STDIN_FILENO, STDOUT_FILENO);
  const bool hasOwnTime = options.record.isAsked() || options.heard.asked;
  const auto source = hasOwnTime ? session::TimeSource::simulated : session::TimeSource::clock;
  const auto session = options.openSession(std::nullopt, source);
  catchInterrupts();
  outlets::OutletList files;
  options.record.open(*session, files, false);
  const auto names = options.namesFor(*session);
  Watch watch(*session, hasOwnTime ? std::launch::deferred : std::launch::async);
  {
    Terminal terminal(STDIN_FILENO, STDOUT_FILENO);
    watch.subscribe(names);
    if (!options.still) session->wander();
    watchIn(terminal, watch, *session, files, hasOwnTime);
  }
  files.finish();
  if (options.record.report(std::cout)) return true;
  // The log is quiet, so this line says it.
  complain("the recording is incomplete: writing failed");
  return false;
}

}  // namespace

void addWatchCommand(CLI::App& program, const session::OpenOptions& robots, int& status) {
  auto options = optionsFor<WatchOptions>(robots);
  CLI::App* command =
      program.add_subcommand("watch", "Show every sensor's present state in a terminal");
  command->footer(kWatchFooter);
  addWorld(*command, *options);
  addPose(*command, *options);
  addSubscriptions(*command, *options);
  command->add_flag("--still", options->still, "the robot stays where it is");
  CLI::Option* once = command->add_flag("--once", options->once, "print one table and exit");
  options->record.addOption(*command, "--record", "record the session to this file (.mcap)")
      ->excludes(once);
  command->callback([options, &status] {
    const QuietLog quiet(!options->once);
    if (options->once) {
      status = watchOnce(*options);
    } else if (!watchOn(*options)) {
      status = kIncomplete;
    }
  });
}

}  // namespace QV::app
