#include "outlets/foxglove/internal/foxglove_feed.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>

#include "outlets/foxglove/internal/foxglove_messages.h"
#include "outlets/foxglove/internal/viewer_drive.h"
#include "outlets/foxglove/internal/viewer_request.h"
#include "platform/navigation/internal/map_shift.h"

namespace QV::outlets {
namespace {

using nlohmann::json;

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
                   [&](const json& id) { viewers.unsubscribe(client, numberIn(id)); });
  }
  if (op == "advertise") {
    return forEach(*client, message, "channels", [&](const json& channel) {
      xAdvertise(client, foxglove::driveChannelIn(channel));
    });
  }
  if (op == "unadvertise") {
    return forEach(*client, message, "channelIds",
                   [&](const json& id) { viewers.removeWheel(client, numberIn(id)); });
  }
  throw std::invalid_argument(
      std::string("\"op\": subscribe, unsubscribe, advertise or unadvertise expected, ") +
      op.dump() + " given");
}

void FoxgloveFeed::xAdvertise(const std::shared_ptr<WebClient>& client, std::uint32_t channel) {
  if (!requests) throw std::invalid_argument("viewers may not drive here: see --viewer-drive");
  viewers.addWheel(client, channel);
}

void FoxgloveFeed::xDrive(const std::shared_ptr<WebClient>& client, const std::string& frame) {
  const auto message = foxglove::readViewerMessage(frame);
  viewers.checkWheel(client, message.channel);
  const auto refuse = [client](const std::string& reason) {
    client->send(textMessage(foxglove::errorStatus(reason)));
  };
  if (!requests->add({foxglove::readVelocity(message.payload), refuse})) {
    refuse("too many commands wait already");
  }
}

void FoxgloveFeed::xSubscribe(const std::shared_ptr<WebClient>& client, std::uint32_t subscription,
                              std::uint32_t channel) {
  if (channel == 0 || channel > channels.all.size())
    throw std::invalid_argument("channel " + std::to_string(channel) + " does not exist");
  viewers.subscribe(client, subscription, channel);
  // The map does not change: once is enough.
  const auto now = ko::Clock::now();
  if (channel == foxglove::kMap && map)
    foxglove::sendData(*client, subscription, channel,
                       {Delivery::latest, now, foxglove::grid(*map, now)});
  const MapShift shift = map ? map->getShift() : MapShift();
  // Nothing may take its place: it comes once.
  if (channel == foxglove::kPose && isShifted(shift))
    foxglove::sendData(*client, subscription, channel,
                       {Delivery::control, now, foxglove::utmTransform(shift, now)});
}

void FoxgloveFeed::onClose(const std::shared_ptr<WebClient>& client) {
  viewers.remove(client);
}

void FoxgloveFeed::show(const session::Snapshot& snapshot) {
  xShowDepth(snapshot);
  const auto publish = [&](std::uint32_t channel, const auto& payload) {
    if (viewers.isWatched(channel))
      viewers.publish(channel, {Delivery::latest, snapshot.time, payload()});
  };
  publish(foxglove::kPose, [&] { return foxglove::frameTransform(snapshot); });
  publish(channels.fields, [&] { return foxglove::fieldsOfView(snapshot); });
  for (const auto& [channel, name] : channels.sensors) {
    const auto sensor = std::ranges::find(snapshot.sensors, name, &session::SensorState::name);
    if (sensor == snapshot.sensors.end()) continue;
    publish(channel, [&] { return foxglove::pointCloud(*sensor, snapshot); });
  }
}

// The camera takes its time: others need not wait for it.
void FoxgloveFeed::xShowDepth(const session::Snapshot& snapshot) {
  if (channels.depth == 0 || !viewers.isWatched(channels.depth)) return depth.rest();
  const auto frame = depth.next(snapshot);
  if (!frame) return;
  viewers.publish(channels.depth, {Delivery::latest, snapshot.time,
                                   foxglove::depthImage(*frame, depth.getSensor(), snapshot.time)});
}

void FoxgloveFeed::showLog(const std::vector<ko::log::Record>& lines) {
  if (!viewers.isWatched(foxglove::kLog)) return;
  for (const auto& line : lines)
    viewers.publish(foxglove::kLog, {Delivery::recent, line.timestamp, foxglove::logLine(line)});
}

bool FoxgloveFeed::isWatched() const {
  if (!depth.isResting()) return true;
  return std::ranges::any_of(channels.all, [this](const auto& channel) {
    return channel.id != foxglove::kLog && channel.id != foxglove::kMap &&
           viewers.isWatched(channel.id);
  });
}

session::Demand FoxgloveFeed::getDemand() const {
  session::Demand demand;
  for (const auto& [subscriber, subscribed] : viewers.getChannels()) {
    std::set<std::string>& wanted = demand[subscriber];
    for (const std::uint32_t channel : subscribed) {
      const auto sensor = channels.sensors.find(channel);
      if (sensor != channels.sensors.end()) wanted.insert(sensor->second);
      if (channel == channels.depth && channel != 0) wanted.insert(depth.getSensor());
    }
  }
  return demand;
}

}  // namespace QV::outlets
