#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "outlets/web/internal/outbox.h"
#include "platform/api.h"

namespace QV::outlets {

/** The other end of a WebSocket. */
class QV_API WebClient {
 public:
  /** The subprotocol that was chosen for it, empty for none. */
  explicit WebClient(std::string protocol) : protocol(std::move(protocol)) {}
  virtual ~WebClient() = default;
  WebClient(const WebClient&) = delete;
  WebClient& operator=(const WebClient&) = delete;

  /** Sends without waiting; drops messages after the end. Thread-safe. */
  virtual void send(WebMessage message) = 0;

  const std::string protocol;
};

/** The listener to the clients of a server's WebSockets. */
class QV_API WebListener {
 public:
  WebListener() = default;
  virtual ~WebListener() = default;
  WebListener(const WebListener&) = delete;
  WebListener& operator=(const WebListener&) = delete;

  /** Returns the content of a path that is no file of the server; std::nullopt if there is none. */
  virtual std::optional<std::string> findContent(const std::string&) const { return std::nullopt; }

  virtual void onOpen(const std::shared_ptr<WebClient>& client) = 0;
  virtual void onMessage(const std::shared_ptr<WebClient>& client, const std::string& message,
                         bool binary) = 0;
  virtual void onClose(const std::shared_ptr<WebClient>& client) = 0;
};

/** The handler of a server's WebSockets. Called on the server's thread, one call at a time. */
class QV_API WebHandler : public WebListener {
 public:
  /**
   * Returns the subprotocol for a client, of those that it offers for a path; empty for none,
   * std::nullopt to refuse it.
   */
  virtual std::optional<std::string> chooseProtocol(
      const std::string& path, const std::vector<std::string>& offered) const = 0;
};

}  // namespace QV::outlets
