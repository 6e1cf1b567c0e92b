#include "apps/live/live_server.h"

#include <algorithm>
#include <exception>

#include "apps/live/page_files.h"

namespace QV::app {
namespace {

constexpr std::chrono::milliseconds kTick{20};
constexpr std::chrono::milliseconds kPublishPeriod{100};
// What a world that is too slow for the clock does not make up.
constexpr std::chrono::milliseconds kMostAtOnce{50};

}  // namespace

LiveServer::LiveServer(RobotRun& robot, ko::SimulatedTime& time,
                       const WebServer::Settings& settings)
    : world(robot, time),
      pages(robot, log, requests),
      hub(pages),
      server(settings, getPageFiles(), hub) {}

void LiveServer::subscribe(const std::set<std::string>& sensorsOrFamilies) {
  for (const std::string& name : sensorsOrFamilies) world.execute(SubscribeCommand{name, true});
}

void LiveServer::runBriefly() {
  for (const LiveRequest& request : requests.takeUntil(ranUntil + kTick)) xDo(request);
  const auto now = MachineClock::now();
  const auto passed = std::min<MachineClock::duration>(now - ranUntil, kMostAtOnce);
  ranUntil = now;
  world.run(ko::Duration(std::chrono::nanoseconds(passed).count()));
  pages.publishLog(log.takeNew());
  if (now < publishNext) return;
  publishNext = std::max(publishNext + kPublishPeriod, now);
  xPublish();
}

void LiveServer::xDo(const LiveRequest& request) {
  try {
    world.execute(request.command);
  } catch (const std::exception& exception) {
    request.refuse(exception.what());
  }
}

void LiveServer::xPublish() {
  if (pages.hasClients()) pages.publish(world.look());
}

}  // namespace QV::app
