#include "outlets/web/internal/page_feed.h"

#include <utility>

#include "outlets/web/internal/live_messages.h"
#include "session/usage_error.h"

namespace QV::outlets {
namespace {

WebMessage messageOf(std::string text, Delivery delivery = Delivery::control) {
  return {std::make_shared<const std::string>(std::move(text)), false, delivery};
}

}  // namespace

PageFeed::PageFeed(session::Session& robot, RequestQueue& requests)
    : hello(std::make_shared<const std::string>(helloMessage(robot))),
      sensors(robot.getManager().getSensorList()),
      requests(requests) {}

void PageFeed::onOpen(const std::shared_ptr<WebClient>& client) {
  client->send({hello});
  // Under one lock with publishLog: a client gets each line once.
  std::lock_guard lock(mutex);
  client->send(messageOf(logMessage({lastLines.begin(), lastLines.end()})));
  clients.insert(client);
}

void PageFeed::onMessage(const std::shared_ptr<WebClient>& client, const std::string& message,
                         bool binary) {
  const auto refuse = [client, op = findOp(message)](const std::string& reason) {
    client->send(messageOf(refusedMessage(op, reason)));
  };
  if (binary) return refuse("text expected, bytes given");
  try {
    if (requests.add({parseCommand(message, sensors), refuse})) return;
    refuse("fewer commands expected: too many wait already");
  } catch (const session::UsageError& error) {
    refuse(error.what());
  }
}

void PageFeed::onClose(const std::shared_ptr<WebClient>& client) {
  std::lock_guard lock(mutex);
  clients.erase(client);
}

void PageFeed::publish(const session::Snapshot& snapshot) {
  if (hasClients()) publish("state", stateMessage(snapshot));
}

void PageFeed::publishLog(const std::vector<ko::log::Record>& lines) {
  if (lines.empty()) return;
  const WebMessage message = messageOf(logMessage(lines), Delivery::recent);
  std::lock_guard lock(mutex);
  lastLines.insert(lastLines.end(), lines.begin(), lines.end());
  while (lastLines.size() > kLastLines) lastLines.pop_front();
  xSendToAll(message);
}

void PageFeed::publish(const std::string& slot, std::string message) {
  WebMessage latest = messageOf(std::move(message), Delivery::latest);
  latest.slot = slot;
  std::lock_guard lock(mutex);
  xSendToAll(latest);
}

bool PageFeed::hasClients() const {
  std::lock_guard lock(mutex);
  return !clients.empty();
}

void PageFeed::xSendToAll(const WebMessage& message) {
  for (const auto& client : clients) client->send(message);
}

}  // namespace QV::outlets
