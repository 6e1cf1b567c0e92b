#include "outlets/web/live_server.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <exception>
#include <optional>
#include <variant>

#include "outlets/foxglove/internal/foxglove_feed.h"
#include "outlets/outlet.h"
#include "outlets/web/internal/live_hub.h"
#include "outlets/web/internal/page_feed.h"
#include "outlets/web/internal/page_files.h"
#include "outlets/web/internal/request_queue.h"
#include "outlets/web/internal/web_guard.h"
#include "outlets/web/internal/web_server.h"
#include "platform/ko/log.h"
#include "session/internal/command.h"
#include "session/internal/goal_search.h"
#include "session/internal/gradual_seek.h"

namespace QV::outlets {
namespace {

using MachineClock = std::chrono::steady_clock;

constexpr char kSubscriber[] = "live view";
constexpr std::chrono::milliseconds kTick{20};
constexpr std::chrono::milliseconds kShowPeriod{100};
// A slow session skips the time beyond this.
constexpr std::chrono::milliseconds kMostAtOnce{50};

// Each speaks subprotocols of its own.
std::vector<std::shared_ptr<WebOutlet>> makeWebOutlets(session::Session& robot,
                                                       RequestQueue& requests, bool viewerDrive) {
  return {std::make_shared<PageFeed>(robot, requests),
          std::make_shared<FoxgloveFeed>(robot, viewerDrive ? &requests : nullptr)};
}

}  // namespace

class LiveServer::Impl {
 public:
  Impl(session::Session& session, ko::log::LogRing& log, const ServerSettings& settings)
      : settings(settings),
        log(log),
        session(session),
        webOutlets(makeWebOutlets(session, requests, settings.viewerDrive)),
        hub(webOutlets),
        server(settings, getPageFiles(), hub) {
    for (const auto& outlet : webOutlets) outlets.add(outlet);
  }

  // The clients' demand ends with the server.
  ~Impl() { session.setDemand({}); }

  void obey(const session::Demand& demand) {
    for (const LiveRequest& request : requests.takeUntil(ranUntil + kTick)) execute(request);
    goOnToGoal();
    session.setDemand(demand);
  }

  void goOn() {
    const auto now = MachineClock::now();
    const auto passed = std::min<MachineClock::duration>(now - ranUntil, kMostAtOnce);
    ranUntil = now;
    if (seek) {
      seekOn(now + kMostAtOnce);
    } else {
      session.keepPace(ko::Duration(std::chrono::nanoseconds(passed).count()));
    }
    outlets.showLog(log.takeNew());
    showIfDue(now);
  }

  void execute(const LiveRequest& request) {
    try {
      if (const auto* goal = std::get_if<session::GoalCommand>(&request.command)) {
        search.emplace(session, goal->position);
        refuseGoal = request.refuse;
      } else if (const auto* place = std::get_if<session::SeekCommand>(&request.command)) {
        seek.emplace(session, ko::Duration(std::llround(1e9 * place->time)));
        refuseSeek = request.refuse;
      } else {
        session::execute(session, kSubscriber, request.command);
      }
    } catch (const std::exception& exception) {
      request.refuse(exception.what());
    }
  }

  void goOnToGoal() {
    try {
      if (search && search->finish()) search.reset();
    } catch (const std::exception& exception) {
      search.reset();
      refuseGoal(exception.what());
    }
  }

  // A far place takes seconds: pages see the way there.
  void seekOn(MachineClock::time_point end) {
    try {
      while (seek && MachineClock::now() < end)
        if (seek->goOn()) seek.reset();
    } catch (const std::exception& exception) {
      seek.reset();
      refuseSeek(exception.what());
    }
  }

  void showIfDue(MachineClock::time_point now) {
    if (now < showNext) return;
    showNext = std::max(showNext + kShowPeriod, now);
    if (outlets.isWatched()) outlets.show(session.look());
  }

  const ServerSettings settings;
  ko::log::LogRing& log;
  RequestQueue requests;
  session::Session& session;
  std::optional<session::GoalSearch> search;
  RequestQueue::Refusal refuseGoal;
  std::optional<session::GradualSeek> seek;
  RequestQueue::Refusal refuseSeek;
  OutletList outlets;
  const std::vector<std::shared_ptr<WebOutlet>> webOutlets;
  LiveHub hub;
  const WebServer server;
  MachineClock::time_point ranUntil = MachineClock::now();
  MachineClock::time_point showNext = ranUntil;
};

LiveServer::LiveServer(session::Session& session, ko::log::LogRing& log,
                       const ServerSettings& settings)
    : impl(std::make_unique<Impl>(session, log, settings)) {}

LiveServer::~LiveServer() = default;

std::string LiveServer::getUrl() const {
  const std::string& address = impl->settings.address;
  const bool isV6 = address.find(':') != std::string::npos;
  return "http://" + (isV6 ? "[" + address + "]" : address) + ":" + std::to_string(getPort()) + "/";
}

unsigned short LiveServer::getPort() const {
  return impl->server.getPort();
}

bool LiveServer::isOpen() const {
  return !isLoopback(impl->settings.address);
}

void LiveServer::add(std::shared_ptr<Outlet> outlet) {
  impl->outlets.add(std::move(outlet));
}

void LiveServer::subscribe(const std::set<std::string>& sensorsOrFamilies) {
  impl->session.subscribe(kSubscriber, sensorsOrFamilies);
}

void LiveServer::runBriefly() {
  impl->obey(getDemand());
  impl->goOn();
}

session::Demand LiveServer::getDemand() const {
  return impl->outlets.getDemand();
}

void LiveServer::obey(const session::Demand& demand) {
  impl->obey(demand);
}

void LiveServer::goOn() {
  impl->goOn();
}

}  // namespace QV::outlets
