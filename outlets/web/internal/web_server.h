#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "outlets/web/internal/page_files.h"
#include "outlets/web/internal/web_handler.h"
#include "outlets/web/live_server.h"
#include "platform/api.h"

namespace QV::outlets {

/**
 * Serves files by name ("index.html" also as "/") and WebSockets, on a thread of its own. Slow,
 * silent, too large, malformed or cross-site clients are refused or closed; see docs/live-view.md
 * for the limits.
 */
class QV_API WebServer {
 public:
  using Settings = ServerSettings;

  /** Connections that are served at one time; more are closed. */
  static constexpr int kMostConnections = 128;
  /** Bytes of a message from a client. */
  static constexpr int kLongestMessage = 4096;

  /** The handler must outlive it. UsageError for an address or port that it can't listen at. */
  WebServer(const Settings& settings, const std::vector<PageFile>& files, WebHandler& handler);
  /** Says goodbye to every client, waiting no longer than a moment. */
  ~WebServer();
  WebServer(const WebServer&) = delete;
  WebServer& operator=(const WebServer&) = delete;

  unsigned short getPort() const;

 private:
  class Impl;
  const std::unique_ptr<Impl> impl;
};

}  // namespace QV::outlets
