#include "outlets/web/live_server.h"

#include <algorithm>
#include <exception>

#include "outlets/web/internal/live_messages.h"
#include "outlets/web/internal/page_files.h"
#include "sensor/perception/sensor_3d.h"

namespace QV::outlets {
namespace {

constexpr char kSubscriber[] = "live view";
constexpr std::chrono::milliseconds kTick{20};
constexpr std::chrono::milliseconds kPublishPeriod{100};
constexpr std::chrono::milliseconds kDepthPeriod{200};
// What a world that is too slow for the clock does not make up.
constexpr std::chrono::milliseconds kMostAtOnce{50};

std::string findDepthSensor(sensor::SensorManager& manager) {
  for (const std::string& name : manager.getSensorList()) {
    if (dynamic_cast<sensor::Sensor3D*>(manager.getSensorPtr(name).get())) return name;
  }
  return {};
}

// Whether it is due; if so, when it is due again.
bool isDue(std::chrono::steady_clock::time_point& next, std::chrono::steady_clock::time_point now,
           std::chrono::milliseconds period) {
  if (now < next) return false;
  next = std::max(next + period, now);
  return true;
}

}  // namespace

LiveServer::LiveServer(session::Session& session, session::LogRing& log,
                       const WebServer::Settings& settings)
    : log(log),
      session(session),
      depthSensor(findDepthSensor(session.getManager())),
      depthView(session.getBroker()),
      pages(session, requests),
      viewers(session),
      hub(pages, viewers),
      server(settings, getPageFiles(), hub) {}

void LiveServer::subscribe(const std::set<std::string>& sensorsOrFamilies) {
  session.subscribe(kSubscriber, sensorsOrFamilies);
}

void LiveServer::runBriefly() {
  for (const LiveRequest& request : requests.takeUntil(ranUntil + kTick)) xDo(request);
  const auto now = MachineClock::now();
  const auto passed = std::min<MachineClock::duration>(now - ranUntil, kMostAtOnce);
  ranUntil = now;
  session.keepPace(ko::Duration(std::chrono::nanoseconds(passed).count()));
  const auto lines = log.takeNew();
  pages.publishLog(lines);
  viewers.publishLog(lines);
  if (isDue(publishNext, now, kPublishPeriod)) xPublish(now);
}

void LiveServer::xDo(const LiveRequest& request) {
  try {
    session::execute(session, kSubscriber, request.command);
  } catch (const std::exception& exception) {
    request.refuse(exception.what());
  }
}

void LiveServer::xPublish(MachineClock::time_point now) {
  session.setDemand({{"foxglove viewer", viewers.getWatchedSensors()}});
  if (!pages.hasClients() && !viewers.isWatched()) return depthView.rest();
  const session::Snapshot snapshot = session.look();
  pages.publish(snapshot);
  viewers.publish(snapshot);
  if (isDue(depthNext, now, kDepthPeriod)) xPublishDepth();
}

void LiveServer::xPublishDepth() {
  if (!pages.hasClients() || !session.getManager().isSensorStarted(depthSensor))
    return depthView.rest();
  if (const auto depth = depthView.take()) {
    pages.publish("depth", depthMessage(depthSensor, depthPainter.paint(*depth)));
  }
}

}  // namespace QV::outlets
