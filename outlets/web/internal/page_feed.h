#pragma once

#include <cstddef>
#include <deque>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "outlets/internal/json_values.h"
#include "outlets/web/internal/depth_frames.h"
#include "outlets/web/internal/depth_picture.h"
#include "outlets/web/internal/live_command.h"
#include "outlets/web/internal/map_tiles.h"
#include "outlets/web/internal/request_queue.h"
#include "outlets/web/internal/web_clients.h"
#include "outlets/web/internal/web_outlet.h"
#include "platform/ko/log.h"
#include "session/session.h"

namespace QV::outlets {

/** The page's own stream, "qv.live.v1": JSON both ways. */
class QV_API PageFeed : public WebOutlet {
 public:
  /** The number of log lines that a new page gets. */
  static constexpr std::size_t kLastLines = 200;

  /** The queue and the robot's services must outlive it; the rest is looked at only here. */
  PageFeed(session::Session& robot, RequestQueue& requests);
  ~PageFeed() override;

  std::vector<std::string> getProtocols() const override { return {"qv.live.v1"}; }
  /** The map's tiles. */
  std::optional<std::string> findContent(const std::string& path) const override {
    return tiles.find(path);
  }
  void onOpen(const std::shared_ptr<WebClient>& client) override;
  /** A subscription is the client's own; all other commands go into the queue. */
  void onMessage(const std::shared_ptr<WebClient>& client, const std::string& message,
                 bool binary) override;
  void onClose(const std::shared_ptr<WebClient>& client) override;

  session::Demand getDemand() const override;
  /** True while there are pages, and once after the last has gone, so that the camera may rest. */
  bool isWatched() const override;
  void show(const session::Snapshot& snapshot) override;
  void showLog(const std::vector<ko::log::Record>& lines) override;

 private:
  /** The wishes of one page. */
  struct Page {
    std::set<std::string> sensors;
    /** The sensor whose records it looks at; empty for none. */
    std::string inspected;
    bool inSpace = false;
  };

  void xExecute(const std::shared_ptr<WebClient>& client, const PageCommand& command,
                const RequestQueue::Refusal& refuse);
  bool xHasPages() const;
  // The caller of these holds the mutex.
  static void xWant(Page& page, const session::SubscribeCommand& subscription);
  void xShowDetails(const session::Snapshot& snapshot);

  const MapTiles tiles;
  const Json world;
  const std::set<std::string> sensors;
  const MapShift shift;
  RequestQueue& requests;
  DepthFrames depth;
  DepthPainter painter;
  mutable std::mutex mutex;
  /** "page 3". */
  WebClients<Page> pages{"page"};
  std::deque<ko::log::Record> lastLines;
};

}  // namespace QV::outlets
