#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "outlets/outlet.h"
#include "platform/ko/log.h"
#include "session/session.h"

namespace QV::outlets {

/** The address that a server listens at, and the origins that may connect. */
struct ServerSettings {
  /** The IP address to listen at. */
  std::string address = "127.0.0.1";
  /** The port; 0 takes any free port. */
  unsigned short port = 8765;
  /** Further origins (web sites) whose pages may connect, such as "https://viewer.example". */
  std::vector<std::string> origins = {};
  /** True if viewers of the Foxglove protocol may drive, as pages always may. */
  bool viewerDrive = false;
};

/**
 * A server that runs a session by the machine's clock and shows it to pages, and to viewers that
 * speak the Foxglove WebSocket protocol. Use it on the session's thread. Session and log must
 * outlive it.
 *
 *     ko::log::LogRing log;
 *     const auto session = QV::session::openVirtual("porter");
 *     QV::outlets::LiveServer server(*session, log, {});
 *     std::cout << "Open " << server.getUrl() << " in a browser\n" << std::flush;
 *     while (true) server.runBriefly();
 */
class QV_API LiveServer {
 public:
  /** Listens. Throws UsageError if the address or port can't be used. */
  LiveServer(session::Session& session, ko::log::LogRing& log, const ServerSettings& settings);
  ~LiveServer();
  LiveServer(const LiveServer&) = delete;
  LiveServer& operator=(const LiveServer&) = delete;

  /** The address for a browser: "http://127.0.0.1:8765/". */
  std::string getUrl() const;
  unsigned short getPort() const;
  /** True if other machines reach it. */
  bool isOpen() const;

  /** Adds an outlet: it gets a snapshot ten times a second. */
  void add(std::shared_ptr<Outlet> outlet);

  /** Subscribes as "live view", until the session ends or its recording is played from the start
   * again. Throws UsageError for an unknown name. */
  void subscribe(const std::set<std::string>& sensorsOrFamilies);

  /** Runs the session for about 20 ms, executes the clients' commands and sends them the news. Call
   * it in a loop. */
  void runBriefly();
  /** The sensors that its clients and outlets want now. */
  session::Demand getDemand() const;
  /** Does the first part of runBriefly(): waits up to 20 ms for clients' commands, executes them,
   * and starts and stops sensors as `demand` says. That takes as long as the hardware does. */
  void obey(const session::Demand& demand);
  /** Does the second part: advances the session and sends the news. */
  void goOn();

 private:
  class Impl;
  const std::unique_ptr<Impl> impl;
};

}  // namespace QV::outlets
