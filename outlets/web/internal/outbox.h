#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/api.h"

namespace QV::outlets {

/** The fate of a message to a client that is not read yet. */
enum class Delivery {
  /** A message that comes in any case; a client that lets too many of these wait is given up. */
  control,
  /** A newer one of the same slot takes its place. */
  latest,
  /** The oldest of these are dropped when too many wait. */
  recent
};

/** A message to a client. Copies share the payload. */
struct WebMessage {
  std::shared_ptr<const std::string> payload;
  bool binary = false;
  Delivery delivery = Delivery::control;
  /** The slot of Delivery::latest. */
  std::string slot = {};
};

/** A text for a client. */
inline WebMessage textMessage(std::string text, Delivery delivery = Delivery::control,
                              std::string slot = {}) {
  return {std::make_shared<const std::string>(std::move(text)), false, delivery, std::move(slot)};
}

/**
 * The messages that wait to be written to one client: never more than so much. For one thread at a
 * time.
 */
class QV_API Outbox {
 public:
  static constexpr std::size_t kMostControl = 256;
  static constexpr std::size_t kMostRecent = 64;
  static constexpr std::size_t kMostSlots = 256;

  /** False if the client is to be given up. */
  bool add(WebMessage message);
  /** Returns the next message: control first, then the slots in turn; null if none waits. */
  std::optional<WebMessage> take();

 private:
  std::optional<WebMessage> xTakeLatest();

  std::deque<WebMessage> control;
  std::deque<WebMessage> recent;
  std::map<std::string, WebMessage> latest;
  /** The slot that was taken last: the one after it is next. */
  std::string lastSlot;
  bool recentIsNext = false;
};

}  // namespace QV::outlets
