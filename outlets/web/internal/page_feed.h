#pragma once

#include <cstddef>
#include <deque>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "outlets/web/live_feed.h"
#include "outlets/web/request_queue.h"
#include "platform/ko/log.h"
#include "session/session.h"

namespace QV::outlets {

/** The page's own stream: JSON both ways. */
class PageFeed : public LiveFeed {
 public:
  /** Of the log, for whoever comes. */
  static constexpr std::size_t kLastLines = 200;

  /** The queue must outlive it; the robot is looked at only here. */
  PageFeed(session::Session& robot, RequestQueue& requests);

  void onOpen(const std::shared_ptr<WebClient>& client) override;
  void onMessage(const std::shared_ptr<WebClient>& client, const std::string& message,
                 bool binary) override;
  void onClose(const std::shared_ptr<WebClient>& client) override;

  void publish(const session::Snapshot& snapshot) override;
  void publishLog(const std::vector<ko::log::Record>& lines) override;
  /** Takes the place of the last message of this slot where that is not read yet. */
  void publish(const std::string& slot, std::string message);
  bool hasClients() const;

 private:
  /** The caller holds the mutex. */
  void xSendToAll(const WebMessage& message);

  const std::shared_ptr<const std::string> hello;
  const std::set<std::string> sensors;
  RequestQueue& requests;
  mutable std::mutex mutex;
  std::set<std::shared_ptr<WebClient>> clients;
  std::deque<ko::log::Record> lastLines;
};

}  // namespace QV::outlets
