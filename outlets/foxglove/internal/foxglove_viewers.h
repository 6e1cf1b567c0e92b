#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "outlets/web/internal/web_clients.h"
#include "platform/ko/clock.h"

namespace QV::outlets::foxglove {

/** A message for those who have subscribed to a channel. */
struct ChannelMessage {
  Delivery delivery = Delivery::latest;
  ko::Clock::time_point time;
  std::string payload;
};

/**
 * Sends a message of a channel to a subscription of it. A newer one of the channel takes its place,
 * also for another subscription, so that a client which takes and leaves a channel again and again
 * holds one of it.
 */
void sendData(WebClient& client, std::uint32_t subscription, std::uint32_t channel,
              const ChannelMessage& message);

/**
 * The viewers of a session, and the channels that each wants or drives on. What can't be done is a
 * std::invalid_argument. Safe from any thread.
 */
class Viewers {
 public:
  using Client = std::shared_ptr<WebClient>;
  static constexpr std::size_t kMostWheels = 64;

  void add(const Client& client);
  void remove(const Client& client);

  void subscribe(const Client& client, std::uint32_t subscription, std::uint32_t channel);
  void unsubscribe(const Client& client, std::uint32_t subscription);
  bool isWatched(std::uint32_t channel) const;
  void publish(std::uint32_t channel, const ChannelMessage& message) const;
  /** The channels that each wants, by its name: "foxglove viewer 2". */
  std::map<std::string, std::set<std::uint32_t>> getChannels() const;

  /** A wheel is a channel of the viewer's own, on which it drives; it has at most kMostWheels. */
  void addWheel(const Client& client, std::uint32_t channel);
  void removeWheel(const Client& client, std::uint32_t channel);
  void checkWheel(const Client& client, std::uint32_t channel);

 private:
  struct Wishes {
    /** The channel of each subscription. */
    std::map<std::uint32_t, std::uint32_t> subscriptions;
    std::set<std::uint32_t> wheels;
  };

  mutable std::mutex mutex;
  WebClients<Wishes> viewers{"foxglove viewer"};
};

}  // namespace QV::outlets::foxglove
