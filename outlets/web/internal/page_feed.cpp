#include "outlets/web/internal/page_feed.h"

#include <utility>
#include <variant>

#include "outlets/web/internal/hello_message.h"
#include "outlets/web/internal/live_messages.h"
#include "outlets/web/internal/page_details.h"
#include "session/usage_error.h"

namespace QV::outlets {

PageFeed::PageFeed(session::Session& robot, RequestQueue& requests)
    : tiles(robot.getMap()),
      world(describeWorld(robot, tiles.getLevelCount())),
      sensors(robot.getManager().getSensorList()),
      shift(robot.getMap() ? robot.getMap()->getShift() : MapShift()),
      requests(requests),
      depth(robot, findDepthSensor(robot)) {}

PageFeed::~PageFeed() = default;

void PageFeed::onOpen(const std::shared_ptr<WebClient>& client) {
  // The lock is shared with showLog, so that a client gets each line once.
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
    xExecute(client, parseCommand(message, sensors, shift), refuse);
  } catch (const session::UsageError& error) {
    refuse(error.what());
  }
}

void PageFeed::xExecute(const std::shared_ptr<WebClient>& client, const PageCommand& command,
                        const RequestQueue::Refusal& refuse) {
  std::lock_guard lock(mutex);
  Page& page = pages.at(client);
  if (const auto* inspect = std::get_if<InspectCommand>(&command)) {
    page.inspected = inspect->sensor;
  } else if (const auto* space = std::get_if<SpaceCommand>(&command)) {
    page.inSpace = space->on;
  } else {
    const auto& order = std::get<session::Command>(command);
    if (const auto* subscription = std::get_if<session::SubscribeCommand>(&order)) {
      return xWant(page, *subscription);
    }
    if (requests.add({order, refuse})) return;
    refuse("too many commands are waiting; try again");
  }
}

void PageFeed::xWant(Page& page, const session::SubscribeCommand& subscription) {
  if (subscription.on) {
    page.sensors.insert(subscription.sensor);
  } else {
    page.sensors.erase(subscription.sensor);
  }
}

void PageFeed::onClose(const std::shared_ptr<WebClient>& client) {
  std::lock_guard lock(mutex);
  pages.remove(client);
}

session::Demand PageFeed::getDemand() const {
  std::lock_guard lock(mutex);
  session::Demand demand;
  for (const auto& [client, page] : pages) demand[page.subscriber] = page.state.sensors;
  return demand;
}

bool PageFeed::isWatched() const {
  return xHasPages() || !depth.isResting();
}

void PageFeed::show(const session::Snapshot& snapshot) {
  if (!xHasPages()) return depth.rest();
  const WebMessage state = textMessage(pageStateOf(snapshot), Delivery::latest, "state");
  const auto frame = depth.next(snapshot);
  const auto picture =
      frame ? std::optional(depthMessage(depth.getSensor(), painter.paint(*frame))) : std::nullopt;
  std::lock_guard lock(mutex);
  pages.sendToAll(state);
  if (picture) pages.sendToAll(textMessage(*picture, Delivery::latest, "depth"));
  xShowDetails(snapshot);
}

void PageFeed::xShowDetails(const session::Snapshot& snapshot) {
  std::optional<WebMessage> space;
  for (const auto& [client, page] : pages) {
    if (!page.state.inspected.empty()) {
      client->send(
          textMessage(recordMessage(page.state.inspected, snapshot), Delivery::latest, "record"));
    }
    if (!page.state.inSpace) continue;
    if (!space) space = textMessage(spaceMessage(snapshot), Delivery::latest, "space");
    client->send(*space);
  }
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
