#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "outlets/outlet.h"
#include "platform/ko/log.h"
#include "session/session.h"

namespace QV::outlets {

/** The address that a server listens at, and whom it lets in. */
struct ServerSettings {
  /** The IP address to listen at. */
  std::string address = "127.0.0.1";
  /** 0 takes any that is free. */
  unsigned short port = 8765;
  /** Let in beside its own, such as "https://viewer.example". */
  std::vector<std::string> origins = {};
  /** True if viewers of the Foxglove protocol may drive, as pages always may. */
  bool viewerDrive = false;
};

/**
 * A session that goes on by the machine's clock, and the server that shows it: to pages, and to
 * viewers that speak the Foxglove WebSocket protocol. For the thread that opened the session, which
 * must outlive it, as must the log.
 */
class QV_API LiveServer {
 public:
  /** UsageError for settings with which it can't listen. */
  LiveServer(session::Session& session, ko::log::LogRing& log, const ServerSettings& settings);
  ~LiveServer();
  LiveServer(const LiveServer&) = delete;
  LiveServer& operator=(const LiveServer&) = delete;

  /** The address for a browser: "http://127.0.0.1:8765/". */
  std::string getUrl() const;
  unsigned short getPort() const;
  /** True if other machines reach it. */
  bool isOpen() const;

  /** Shows the session there, too, ten times a second. */
  void add(std::shared_ptr<Outlet> outlet);

  /** Subscribes as "live view", as long as the session lasts; UsageError for a name that there
   * is not. */
  void subscribe(const std::set<std::string>& sensorsOrFamilies);

  /** Goes on for about 20 ms: does what clients ask for, and shows them what is new. */
  void runBriefly();
  /** The sensors that its clients and outlets want now. */
  session::Demand getDemand() const;
  /**
   * Does the first part of runBriefly(): waits for up to 20 ms for what clients ask for, does it,
   * and starts and stops sensors as demanded, which may take as long as hardware does.
   */
  void obey(const session::Demand& demand);
  /** Does the second part: lets time go by, and shows what is new. */
  void goOn();

 private:
  class Impl;
  const std::unique_ptr<Impl> impl;
};

}  // namespace QV::outlets
