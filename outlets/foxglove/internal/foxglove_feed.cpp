#include "outlets/foxglove/internal/foxglove_feed.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>

#include "outlets/foxglove/internal/foxglove_messages.h"
#include "outlets/foxglove/internal/viewer_drive.h"
#include "outlets/foxglove/internal/viewer_request.h"

namespace QV::outlets {
namespace {

using nlohmann::json;

void sendData(WebClient& client, std::uint32_t subscription, Delivery delivery,
              ko::Clock::time_point time, const std::string& payload) {
  client.send(
      {std::make_shared<const std::string>(foxglove::dataFrame(subscription, time, payload)), true,
       delivery, std::to_string(subscription)});
}

// A client gets a status message for each invalid part; the other parts are done.
template <typename Action>
void answering(WebClient& client, const Action& action) {
  try {
    action();
  } catch (const std::invalid_argument& error) {
    client.send(textMessage(foxglove::errorStatus(error.what())));
  }
}

template <typename Action>
void forEach(WebClient& client, const json& message, const char* name, const Action& action) {
  for (const json& entry : foxglove::arrayIn(message, name)) {
    answering(client, [&] { action(entry); });
  }
}

// Each server has a new id, so that viewers forget the last one's data.
std::string newSession() {
  return std::to_string(std::chrono::system_clock::now().time_since_epoch().count());
}

}  // namespace

FoxgloveFeed::FoxgloveFeed(session::Session& robot, RequestQueue* requests)
    : map(robot.getMap()),
      depth(robot, findDepthSensor(robot)),
      channels(foxglove::listChannels(robot.getManager(), depth.getSensor())),
      requests(requests),
      title(robot.getTitle()),
      sessionId(newSession()) {}

FoxgloveFeed::~FoxgloveFeed() = default;

void FoxgloveFeed::onOpen(const std::shared_ptr<WebClient>& client) {
  client->send(textMessage(foxglove::serverInfo(title, sessionId, requests != nullptr)));
  client->send(textMessage(foxglove::advertisement(channels.all)));
  std::lock_guard lock(mutex);
  viewers.add(client);
}

void FoxgloveFeed::onMessage(const std::shared_ptr<WebClient>& client, const std::string& text,
                             bool binary) {
  answering(*client, [&] {
    if (binary) {
      xDrive(client, text);
    } else {
      xAnswer(client, text);
    }
  });
}

void FoxgloveFeed::xAnswer(const std::shared_ptr<WebClient>& client, const std::string& text) {
  using foxglove::memberOf;
  using foxglove::numberIn;
  const json message = json::parse(text, nullptr, false);
  const auto op = message.is_object() && message.contains("op") ? message.at("op") : json();
  if (op == "subscribe") {
    return forEach(*client, message, "subscriptions", [&](const json& entry) {
      const std::uint32_t id = numberIn(memberOf(entry, "id"));
      xSubscribe(client, id, numberIn(memberOf(entry, "channelId")));
    });
  }
  if (op == "unsubscribe") {
    return forEach(*client, message, "subscriptionIds",
                   [&](const json& id) { xUnsubscribe(client, numberIn(id)); });
  }
  if (op == "advertise") {
    return forEach(*client, message, "channels", [&](const json& channel) {
      xAdvertise(client, foxglove::driveChannelIn(channel));
    });
  }
  if (op == "unadvertise") {
    return forEach(*client, message, "channelIds",
                   [&](const json& id) { xUnadvertise(client, numberIn(id)); });
  }
  throw std::invalid_argument(
      std::string("\"op\": subscribe, unsubscribe, advertise or unadvertise expected, ") +
      op.dump() + " given");
}

void FoxgloveFeed::xAdvertise(const std::shared_ptr<WebClient>& client, std::uint32_t channel) {
  if (!requests) throw std::invalid_argument("viewers may not drive here: see --viewer-drive");
  std::lock_guard lock(mutex);
  viewers.at(client).wheels.insert(channel);
}

void FoxgloveFeed::xUnadvertise(const std::shared_ptr<WebClient>& client, std::uint32_t channel) {
  std::lock_guard lock(mutex);
  viewers.at(client).wheels.erase(channel);
}

void FoxgloveFeed::xDrive(const std::shared_ptr<WebClient>& client, const std::string& frame) {
  const auto message = foxglove::readViewerMessage(frame);
  {
    std::lock_guard lock(mutex);
    if (viewers.at(client).wheels.count(message.channel) == 0) {
      throw std::invalid_argument("channel " + std::to_string(message.channel) +
                                  " is not advertised");
    }
  }
  const auto refuse = [client](const std::string& reason) {
    client->send(textMessage(foxglove::errorStatus(reason)));
  };
  if (!requests->add({foxglove::readVelocity(message.payload), refuse})) {
    refuse("too many commands wait already");
  }
}

void FoxgloveFeed::xSubscribe(const std::shared_ptr<WebClient>& client, std::uint32_t subscription,
                              std::uint32_t channel) {
  const auto refuse = [](const std::string& what, std::uint32_t id, const char* why) {
    throw std::invalid_argument(what + " " + std::to_string(id) + why);
  };
  if (channel == 0 || channel > channels.all.size()) refuse("channel", channel, " does not exist");
  {
    std::lock_guard lock(mutex);
    auto& subscriptions = viewers.at(client).subscriptions;
    if (subscriptions.count(subscription) > 0) refuse("subscription", subscription, " is in use");
    for (const auto& [id, taken] : subscriptions) {
      if (taken == channel) refuse("channel", channel, " is subscribed to already");
    }
    subscriptions[subscription] = channel;
  }
  // The map does not change: once is enough.
  if (channel == foxglove::kMap && map) {
    const auto now = ko::Clock::now();
    sendData(*client, subscription, Delivery::latest, now, foxglove::grid(*map, now));
  }
}

void FoxgloveFeed::xUnsubscribe(const std::shared_ptr<WebClient>& client,
                                std::uint32_t subscription) {
  std::lock_guard lock(mutex);
  if (viewers.at(client).subscriptions.erase(subscription) > 0) return;
  throw std::invalid_argument("subscription " + std::to_string(subscription) + " does not exist");
}

void FoxgloveFeed::onClose(const std::shared_ptr<WebClient>& client) {
  std::lock_guard lock(mutex);
  viewers.remove(client);
}

void FoxgloveFeed::show(const session::Snapshot& snapshot) {
  xShowDepth(snapshot);
  std::lock_guard lock(mutex);
  if (xIsWatched(foxglove::kPose)) {
    xPublish(foxglove::kPose, Delivery::latest, snapshot.time, foxglove::frameTransform(snapshot));
  }
  if (xIsWatched(channels.fields)) {
    xPublish(channels.fields, Delivery::latest, snapshot.time, foxglove::fieldsOfView(snapshot));
  }
  for (const auto& [channel, name] : channels.sensors) {
    if (!xIsWatched(channel)) continue;
    const auto sensor = std::find_if(
        snapshot.sensors.begin(), snapshot.sensors.end(),
        [&name = name](const session::SensorState& other) { return other.name == name; });
    if (sensor == snapshot.sensors.end()) continue;
    xPublish(channel, Delivery::latest, snapshot.time, foxglove::pointCloud(*sensor, snapshot));
  }
}

// The camera takes its time: others need not wait for it.
void FoxgloveFeed::xShowDepth(const session::Snapshot& snapshot) {
  const auto isWatched = [this] {
    std::lock_guard lock(mutex);
    return channels.depth != 0 && xIsWatched(channels.depth);
  };
  if (!isWatched()) return depth.rest();
  const auto frame = depth.next(snapshot);
  if (!frame) return;
  const std::string image = foxglove::depthImage(*frame, depth.getSensor(), snapshot.time);
  std::lock_guard lock(mutex);
  xPublish(channels.depth, Delivery::latest, snapshot.time, image);
}

void FoxgloveFeed::showLog(const std::vector<ko::log::Record>& lines) {
  std::lock_guard lock(mutex);
  if (!xIsWatched(foxglove::kLog)) return;
  for (const auto& line : lines) {
    xPublish(foxglove::kLog, Delivery::recent, line.timestamp, foxglove::logLine(line));
  }
}

bool FoxgloveFeed::isWatched() const {
  if (!depth.isResting()) return true;
  std::lock_guard lock(mutex);
  return std::any_of(channels.all.begin(), channels.all.end(), [this](const auto& channel) {
    return channel.id != foxglove::kLog && channel.id != foxglove::kMap && xIsWatched(channel.id);
  });
}

session::Demand FoxgloveFeed::getDemand() const {
  std::lock_guard lock(mutex);
  session::Demand demand;
  for (const auto& [client, viewer] : viewers) {
    std::set<std::string>& wanted = demand[viewer.subscriber];
    for (const auto& [id, channel] : viewer.state.subscriptions) {
      const auto sensor = channels.sensors.find(channel);
      if (sensor != channels.sensors.end()) wanted.insert(sensor->second);
      if (channel == channels.depth && channel != 0) wanted.insert(depth.getSensor());
    }
  }
  return demand;
}

bool FoxgloveFeed::xIsWatched(std::uint32_t channel) const {
  for (const auto& [client, viewer] : viewers) {
    for (const auto& [id, subscribed] : viewer.state.subscriptions) {
      if (subscribed == channel) return true;
    }
  }
  return false;
}

void FoxgloveFeed::xPublish(std::uint32_t channel, Delivery delivery, ko::Clock::time_point time,
                            const std::string& payload) {
  for (const auto& [client, viewer] : viewers) {
    for (const auto& [id, subscribed] : viewer.state.subscriptions) {
      if (subscribed == channel) sendData(*client, id, delivery, time, payload);
    }
  }
}

}  // namespace QV::outlets
