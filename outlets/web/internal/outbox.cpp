#include "outlets/web/internal/outbox.h"

#include <utility>

namespace QV::outlets {
namespace {

WebMessage takeFirst(std::deque<WebMessage>& messages) {
  WebMessage first = std::move(messages.front());
  messages.pop_front();
  return first;
}

}  // namespace

bool Outbox::add(WebMessage message) {
  switch (message.delivery) {
    case Delivery::control:
      control.push_back(std::move(message));
      return control.size() <= kMostControl;
    case Delivery::recent:
      recent.push_back(std::move(message));
      if (recent.size() > kMostRecent) recent.pop_front();
      return true;
    case Delivery::latest:
      latest[message.slot] = std::move(message);
      return latest.size() <= kMostSlots;
  }
  return true;
}

std::optional<WebMessage> Outbox::take() {
  if (!control.empty()) return takeFirst(control);
  recentIsNext = !recentIsNext;
  if (!recent.empty() && (recentIsNext || latest.empty())) return takeFirst(recent);
  return xTakeLatest();
}

std::optional<WebMessage> Outbox::xTakeLatest() {
  if (latest.empty()) return std::nullopt;
  auto next = latest.upper_bound(lastSlot);
  if (next == latest.end()) next = latest.begin();
  lastSlot = next->first;
  WebMessage message = std::move(next->second);
  latest.erase(next);
  return message;
}

}  // namespace QV::outlets
