#pragma once

#include "outlets/foxglove/internal/foxglove_feed.h"
#include "outlets/web/internal/depth_picture.h"
#include "outlets/web/internal/depth_view.h"
#include "outlets/web/internal/page_feed.h"
#include "outlets/web/internal/web_server.h"
#include "outlets/web/live_hub.h"
#include "outlets/web/request_queue.h"
#include "session/internal/log_ring.h"
#include "session/session.h"

namespace QV::outlets {

/**
 * A world that goes on by the machine's clock, and the server that shows it. For the thread that
 * opened the session, which must outlive it.
 */
class LiveServer {
 public:
  /** See WebServer for what it throws. The log must outlive it, too. */
  LiveServer(session::Session& session, session::LogRing& log, const WebServer::Settings& settings);

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

  session::LogRing& log;
  RequestQueue requests;
  session::Session& session;
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

}  // namespace QV::outlets
