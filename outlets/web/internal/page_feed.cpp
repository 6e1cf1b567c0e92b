#include "outlets/web/internal/page_feed.h"

#include <utility>
#include <variant>

#include "outlets/web/internal/live_command.h"
#include "session/usage_error.h"

namespace QV::outlets {

PageFeed::PageFeed(session::Session& robot, RequestQueue& requests)
    : world(describeWorld(robot)),
      sensors(robot.getManager().getSensorList()),
      requests(requests),
      depth(robot, findDepthSensor(robot)) {}

PageFeed::~PageFeed() = default;

void PageFeed::onOpen(const std::shared_ptr<WebClient>& client) {
  // Under one lock with showLog: a client gets each line once.
  std::lock_guard lock(mutex);
  client->send(textMessage(helloMessage(world, pages.add(client))));
  client->send(textMessage(logMessage({lastLines.begin(), lastLines.end()})));
}

void PageFeed::onMessage(const std::shared_ptr<WebClient>& client, const std::string& message,
                         bool binary) {
  const auto refuse = [client, op = findOp(message)](const std::string& reason) {
    client->send(textMessage(refusedMessage(op, reason)));
  };
  if (binary) return refuse("text expected, bytes given");
  try {
    xExecute(client, parseCommand(message, sensors), refuse);
  } catch (const session::UsageError& error) {
    refuse(error.what());
  }
}

void PageFeed::xExecute(const std::shared_ptr<WebClient>& client, const session::Command& command,
                        const RequestQueue::Refusal& refuse) {
  if (const auto* subscription = std::get_if<session::SubscribeCommand>(&command)) {
    std::lock_guard lock(mutex);
    std::set<std::string>& wanted = pages.at(client);
    if (subscription->on) {
      wanted.insert(subscription->sensor);
    } else {
      wanted.erase(subscription->sensor);
    }
  } else if (!requests.add({command, refuse})) {
    refuse("fewer commands expected: too many wait already");
  }
}

void PageFeed::onClose(const std::shared_ptr<WebClient>& client) {
  std::lock_guard lock(mutex);
  pages.remove(client);
}

session::Demand PageFeed::getDemand() const {
  std::lock_guard lock(mutex);
  session::Demand demand;
  for (const auto& [client, page] : pages) demand[page.subscriber] = page.state;
  return demand;
}

bool PageFeed::isWatched() const {
  return xHasPages() || !depth.isResting();
}

void PageFeed::show(const session::Snapshot& snapshot) {
  if (!xHasPages()) return depth.rest();
  const WebMessage state = textMessage(pageStateOf(snapshot), Delivery::latest, "state");
  auto frame = depth.next(snapshot);
  std::lock_guard lock(mutex);
  pages.sendToAll(state);
  if (frame) pages.sendToAll(textMessage(std::move(*frame), Delivery::latest, "depth"));
}

void PageFeed::showLog(const std::vector<ko::log::Record>& lines) {
  if (lines.empty()) return;
  const WebMessage message = textMessage(logMessage(lines), Delivery::recent);
  std::lock_guard lock(mutex);
  lastLines.insert(lastLines.end(), lines.begin(), lines.end());
  while (lastLines.size() > kLastLines) lastLines.pop_front();
  pages.sendToAll(message);
}

bool PageFeed::xHasPages() const {
  std::lock_guard lock(mutex);
  return !pages.isEmpty();
}

}  // namespace QV::outlets
