#pragma once

#include <cstddef>
#include <deque>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "apps/live/live_feed.h"
#include "apps/live/request_queue.h"
#include "apps/run/robot_run.h"
#include "platform/ko/log.h"

namespace QV::app {

/** The page's own stream: JSON both ways. */
class PageFeed : public LiveFeed {
 public:
  /** Of the log, for whoever comes. */
  static constexpr std::size_t kLastLines = 200;

  /** The queue must outlive it; the robot is looked at only here. */
  PageFeed(RobotRun& robot, RequestQueue& requests);

  void onOpen(const std::shared_ptr<WebClient>& client) override;
  void onMessage(const std::shared_ptr<WebClient>& client, const std::string& message,
                 bool binary) override;
  void onClose(const std::shared_ptr<WebClient>& client) override;

  void publish(const LiveSnapshot& snapshot) override;
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

}  // namespace QV::app
