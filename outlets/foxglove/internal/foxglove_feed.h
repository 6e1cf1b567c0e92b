#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "outlets/foxglove/internal/foxglove_channels.h"
#include "outlets/foxglove/internal/foxglove_viewers.h"
#include "outlets/web/internal/depth_frames.h"
#include "outlets/web/internal/request_queue.h"
#include "outlets/web/internal/web_outlet.h"
#include "session/session.h"

namespace QV::outlets {

/**
 * The stream for viewers that speak the Foxglove WebSocket protocol: they look, and where they are
 * allowed to, drive.
 */
class QV_API FoxgloveFeed : public WebOutlet {
 public:
  /** Feeds viewers of a session. With a queue, which must outlive it, they may drive. The
   * session must outlive it, too. */
  explicit FoxgloveFeed(session::Session& robot, RequestQueue* requests = nullptr);
  ~FoxgloveFeed() override;

  std::vector<std::string> getProtocols() const override {
    return {"foxglove.websocket.v1", "foxglove.sdk.v1"};
  }
  void onOpen(const std::shared_ptr<WebClient>& client) override;
  void onMessage(const std::shared_ptr<WebClient>& client, const std::string& message,
                 bool binary) override;
  void onClose(const std::shared_ptr<WebClient>& client) override;

  bool isWatched() const override;
  /** Returns for each viewer the sensors whose channels it has subscribed to. */
  session::Demand getDemand() const override;
  void showLog(const std::vector<ko::log::Record>& lines) override;
  void show(const session::Snapshot& snapshot) override;

 private:
  void xAnswer(const std::shared_ptr<WebClient>& client, const std::string& text);
  void xAdvertise(const std::shared_ptr<WebClient>& client, std::uint32_t channel);
  void xDrive(const std::shared_ptr<WebClient>& client, const std::string& frame);
  void xShowDepth(const session::Snapshot& snapshot);
  void xSubscribe(const std::shared_ptr<WebClient>& client, std::uint32_t subscription,
                  std::uint32_t channel);

  /** Null if there is none. */
  const boost::shared_ptr<const OccupancyMap> map;
  DepthFrames depth;
  const foxglove::Channels channels;
  /** Null where viewers change nothing. */
  RequestQueue* const requests;
  const std::string title;
  const std::string sessionId;
  foxglove::Viewers viewers;
};

}  // namespace QV::outlets
