#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "outlets/foxglove/internal/foxglove_messages.h"
#include "outlets/web/live_feed.h"
#include "session/session.h"

namespace QV::outlets {

/** The stream for viewers that speak the Foxglove WebSocket protocol: they look and change nothing.
 */
class FoxgloveFeed : public LiveFeed {
 public:
  /** The robot's map must outlive it; the rest of the robot is looked at only here. */
  explicit FoxgloveFeed(session::Session& robot);

  void onOpen(const std::shared_ptr<WebClient>& client) override;
  void onMessage(const std::shared_ptr<WebClient>& client, const std::string& message,
                 bool binary) override;
  void onClose(const std::shared_ptr<WebClient>& client) override;

  void publish(const session::Snapshot& snapshot) override;
  void publishLog(const std::vector<ko::log::Record>& lines) override;

  /** Whether any viewer needs the snapshots. */
  bool isWatched() const;
  /** Those whose channel some viewer has subscribed to. */
  std::set<std::string> getWatchedSensors() const;

 private:
  /** Channel by subscription. */
  typedef std::map<std::uint32_t, std::uint32_t> Subscriptions;

  void xSubscribe(const std::shared_ptr<WebClient>& client, std::uint32_t subscription,
                  std::uint32_t channel);
  void xUnsubscribe(const std::shared_ptr<WebClient>& client, std::uint32_t subscription);
  bool xIsWatched(std::uint32_t channel) const;
  void xPublish(std::uint32_t channel, Delivery delivery, ko::Clock::time_point time,
                const std::string& payload);

  const boost::shared_ptr<const OccupancyMap> map;
  std::vector<foxglove::Channel> channels;
  /** By channel. */
  std::map<std::uint32_t, std::string> sensors;
  const std::string title;
  mutable std::mutex mutex;
  std::map<std::shared_ptr<WebClient>, Subscriptions> clients;
};

}  // namespace QV::outlets
