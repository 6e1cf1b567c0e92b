#pragma once

#include "apps/live/live_hub.h"
#include "apps/live/live_world.h"
#include "apps/live/log_ring.h"
#include "apps/live/page_feed.h"
#include "apps/live/request_queue.h"
#include "apps/live/web_server.h"

namespace QV::app {

/**
 * A world that goes on by the machine's clock, and the server that shows it. For the thread that
 * owns the simulated time; the robot and the time must outlive it.
 */
class LiveServer {
 public:
  /** See WebServer for what it throws. */
  LiveServer(RobotRun& robot, ko::SimulatedTime& time, const WebServer::Settings& settings);

  unsigned short getPort() const { return server.getPort(); }

  /** As the page would. */
  void subscribe(const std::set<std::string>& sensorsOrFamilies);

  /** Goes on for about 20 ms: does what clients ask for, and shows them what is new. */
  void runBriefly();

 private:
  typedef std::chrono::steady_clock MachineClock;

  void xDo(const LiveRequest& request);
  void xPublish();

  LogRing log;
  RequestQueue requests;
  LiveWorld world;
  PageFeed pages;
  LiveHub hub;
  WebServer server;
  MachineClock::time_point ranUntil = MachineClock::now();
  MachineClock::time_point publishNext = ranUntil;
};

}  // namespace QV::app
