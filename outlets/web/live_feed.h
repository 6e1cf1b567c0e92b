#pragma once

#include <memory>
#include <string>
#include <vector>

#include "outlets/web/internal/web_handler.h"
#include "platform/ko/log.h"
#include "session/snapshot.h"

namespace QV::outlets {

/** What clients of one subprotocol are told and may ask. Safe from any thread. */
class LiveFeed {
 public:
  LiveFeed() = default;
  virtual ~LiveFeed() = default;
  LiveFeed(const LiveFeed&) = delete;
  LiveFeed& operator=(const LiveFeed&) = delete;

  virtual void onOpen(const std::shared_ptr<WebClient>& client) = 0;
  virtual void onMessage(const std::shared_ptr<WebClient>& client, const std::string& message,
                         bool binary) = 0;
  virtual void onClose(const std::shared_ptr<WebClient>& client) = 0;

  virtual void publish(const session::Snapshot& snapshot) = 0;
  virtual void publishLog(const std::vector<ko::log::Record>& lines) = 0;
};

}  // namespace QV::outlets
