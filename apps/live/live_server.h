#pragma once

#include "apps/live/depth_picture.h"
#include "apps/live/depth_view.h"
#include "apps/live/foxglove_feed.h"
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
  /** See WebServer for what it throws. The log must outlive it, too. */
  LiveServer(RobotRun& robot, ko::SimulatedTime& time, LogRing& log,
             const WebServer::Settings& settings);

  unsigned short getPort() const { return server.getPort(); }

  /** As the page would. */
  void subscribe(const std::set<std::string>& sensorsOrFamilies);

  /** Goes on for about 20 ms: does what clients ask for, and shows them what is new. */
  void runBriefly();

 private:
  typedef std::chrono::steady_clock MachineClock;

  void xDo(const LiveRequest& request);
  void xPublish(MachineClock::time_point now);
  void xPublishDepth();

  LogRing& log;
  RequestQueue requests;
  LiveWorld world;
  /** The sensor that the depth camera's pictures are of; empty if there is none. */
  const std::string depthSensor;
  DepthView depthView;
  DepthPainter depthPainter;
  PageFeed pages;
  FoxgloveFeed viewers;
  LiveHub hub;
  WebServer server;
  MachineClock::time_point ranUntil = MachineClock::now();
  MachineClock::time_point publishNext = ranUntil;
  MachineClock::time_point depthNext = ranUntil;
};

}  // namespace QV::app
