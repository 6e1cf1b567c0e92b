#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "outlets/foxglove/internal/foxglove_channels.h"
#include "outlets/web/internal/web_clients.h"
#include "outlets/web/internal/web_outlet.h"
#include "session/session.h"

namespace QV::outlets {

/** The stream for viewers that speak the Foxglove WebSocket protocol: they look and change nothing.
 */
class QV_API FoxgloveFeed : public WebOutlet {
 public:
  /** The robot is looked at only here. */
  explicit FoxgloveFeed(session::Session& robot);

  std::vector<std::string> getProtocols() const override {
    return {"foxglove.websocket.v1", "foxglove.sdk.v1"};
  }
  void onOpen(const std::shared_ptr<WebClient>& client) override;
  void onMessage(const std::shared_ptr<WebClient>& client, const std::string& message,
                 bool binary) override;
  void onClose(const std::shared_ptr<WebClient>& client) override;

  bool isWatched() const override;
  /** For each viewer the sensors whose channels it has subscribed to. */
  session::Demand getDemand() const override;
  void showLog(const std::vector<ko::log::Record>& lines) override;
  void show(const session::Snapshot& snapshot) override;

 private:
  void xSubscribe(const std::shared_ptr<WebClient>& client, std::uint32_t subscription,
                  std::uint32_t channel);
  void xUnsubscribe(const std::shared_ptr<WebClient>& client, std::uint32_t subscription);
  // The caller of these holds the mutex.
  bool xIsWatched(std::uint32_t channel) const;
  void xPublish(std::uint32_t channel, Delivery delivery, ko::Clock::time_point time,
                const std::string& payload);

  /** Null if there is none. */
  const boost::shared_ptr<const OccupancyMap> map;
  const foxglove::Channels channels;
  const std::string title;
  const std::string sessionId;
  mutable std::mutex mutex;
  /** With the channel of each subscription; "foxglove viewer 2". */
  WebClients<std::map<std::uint32_t, std::uint32_t>> viewers{"foxglove viewer"};
};

}  // namespace QV::outlets
