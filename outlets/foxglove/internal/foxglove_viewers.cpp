#include "outlets/foxglove/internal/foxglove_viewers.h"

#include <stdexcept>

#include "outlets/foxglove/internal/foxglove_protocol.h"

namespace QV::outlets::foxglove {
namespace {

[[noreturn]] void refuse(const std::string& what, std::uint32_t id, const char* why) {
  throw std::invalid_argument(what + " " + std::to_string(id) + why);
}

}  // namespace

void sendData(WebClient& client, std::uint32_t subscription, std::uint32_t channel,
              const ChannelMessage& message) {
  client.send(
      {std::make_shared<const std::string>(dataFrame(subscription, message.time, message.payload)),
       true, message.delivery, std::to_string(channel)});
}

void Viewers::add(const Client& client) {
  std::lock_guard lock(mutex);
  viewers.add(client);
}

void Viewers::remove(const Client& client) {
  std::lock_guard lock(mutex);
  viewers.remove(client);
}

void Viewers::subscribe(const Client& client, std::uint32_t subscription, std::uint32_t channel) {
  std::lock_guard lock(mutex);
  auto& subscriptions = viewers.at(client).subscriptions;
  if (subscriptions.count(subscription) > 0) refuse("subscription", subscription, " is in use");
  for (const auto& [id, taken] : subscriptions) {
    if (taken == channel) refuse("channel", channel, " is subscribed to already");
  }
  subscriptions[subscription] = channel;
}

void Viewers::unsubscribe(const Client& client, std::uint32_t subscription) {
  std::lock_guard lock(mutex);
  if (viewers.at(client).subscriptions.erase(subscription) > 0) return;
  refuse("subscription", subscription, " does not exist");
}

bool Viewers::isWatched(std::uint32_t channel) const {
  std::lock_guard lock(mutex);
  for (const auto& [client, viewer] : viewers) {
    for (const auto& [id, subscribed] : viewer.state.subscriptions) {
      if (subscribed == channel) return true;
    }
  }
  return false;
}

void Viewers::publish(std::uint32_t channel, const ChannelMessage& message) const {
  std::lock_guard lock(mutex);
  for (const auto& [client, viewer] : viewers) {
    for (const auto& [id, subscribed] : viewer.state.subscriptions) {
      if (subscribed == channel) sendData(*client, id, channel, message);
    }
  }
}

std::map<std::string, std::set<std::uint32_t>> Viewers::getChannels() const {
  std::lock_guard lock(mutex);
  std::map<std::string, std::set<std::uint32_t>> channels;
  for (const auto& [client, viewer] : viewers) {
    auto& wanted = channels[viewer.subscriber];
    for (const auto& [id, channel] : viewer.state.subscriptions) wanted.insert(channel);
  }
  return channels;
}

void Viewers::addWheel(const Client& client, std::uint32_t channel) {
  std::lock_guard lock(mutex);
  auto& wheels = viewers.at(client).wheels;
  if (wheels.size() >= kMostWheels && wheels.count(channel) == 0)
    refuse("channel", channel, ": too many channels are advertised");
  wheels.insert(channel);
}

void Viewers::removeWheel(const Client& client, std::uint32_t channel) {
  std::lock_guard lock(mutex);
  viewers.at(client).wheels.erase(channel);
}

void Viewers::checkWheel(const Client& client, std::uint32_t channel) {
  std::lock_guard lock(mutex);
  if (viewers.at(client).wheels.count(channel) == 0)
    refuse("channel", channel, " is not advertised");
}

}  // namespace QV::outlets::foxglove
