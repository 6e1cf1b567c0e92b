#include <iostream>
#include <memory>
#include <unistd.h>

#include "apps/commands/commands.h"
#include "apps/commands/common_options.h"
#include "apps/interrupt.h"
#include "apps/output/quiet_log.h"
#include "apps/subscriber.h"
#include "apps/terminal/terminal.h"
#include "apps/watch/watch.h"
#include "apps/watch/watch_view.h"

namespace QV::app {
namespace {

constexpr int kPeriodMs = 100;
constexpr char kWatchFooter[] =
    "The robot runs on the machine's clock; a virtual one drives about meanwhile. Keys choose a\n"
    "sensor and subscribe, enable or diagnose it; what went wrong with a sensor last stays until\n"
    "something else does. Ages are of the records as they are, 10 times a second.";

struct WatchOptions : CommonOptions {
  bool once = false;
  bool still = false;
};

void watchOnce(const WatchOptions& options) {
  const auto session = options.openSession();
  Watch watch(*session);
  session->subscribe(kSubscriber, options.namesFor(session->getManager()));
  session->run(session->getSettlingTime());
  std::cout << watchTable(watch.look());
}

void watchOn(const WatchOptions& options) {
  checkTerminal(STDIN_FILENO, STDOUT_FILENO);
  const auto session = options.openSession(std::nullopt, session::TimeSource::clock);
  const auto names = options.namesFor(session->getManager());
  Watch watch(*session);
  Terminal terminal(STDIN_FILENO, STDOUT_FILENO);
  watch.subscribe(names);
  if (!options.still) session->wander();
  for (bool on = true; on && !isInterrupted();) {
    terminal.show(watchScreen(watch.look(), terminal.getSize()));
    for (const Key key : terminal.readKeys(kPeriodMs)) on = on && watch.press(key);
  }
}

}  // namespace

void addWatchCommand(CLI::App& program, const session::OpenOptions& robots, int&) {
  auto options = optionsFor<WatchOptions>(robots);
  CLI::App* command = program.add_subcommand("watch", "Show every sensor as it is, in a terminal");
  command->footer(kWatchFooter);
  addWorld(*command, *options);
  addOptionalPose(*command, *options);
  addSubscriptions(*command, *options);
  command->add_flag("--still", options->still, "the robot stays where it is");
  command->add_flag("--once", options->once, "print one table and leave");
  command->callback([options] {
    const QuietLog quiet;
    if (options->once) {
      watchOnce(*options);
    } else {
      watchOn(*options);
    }
  });
}

}  // namespace QV::app
