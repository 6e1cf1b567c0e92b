#include "outlets/web/live_hub.h"

#include <algorithm>

namespace QV::outlets {
namespace {

constexpr char kPageProtocol[] = "qv.live.v1";
const std::vector<std::string> kProtocols = {kPageProtocol, "foxglove.websocket.v1",
                                             "foxglove.sdk.v1"};

}  // namespace

std::optional<std::string> LiveHub::chooseProtocol(const std::string& path,
                                                   const std::vector<std::string>& offered) const {
  if (path != "/live" && path != "/") return std::nullopt;
  if (offered.empty() && path == "/live") return "";
  const auto known =
      std::find_first_of(offered.begin(), offered.end(), kProtocols.begin(), kProtocols.end());
  if (known == offered.end()) return std::nullopt;
  return *known;
}

void LiveHub::onOpen(const std::shared_ptr<WebClient>& client, const std::string& protocol) {
  LiveFeed& feed = protocol.empty() || protocol == kPageProtocol ? pages : viewers;
  feeds[client] = &feed;
  feed.onOpen(client);
}

void LiveHub::onMessage(const std::shared_ptr<WebClient>& client, const std::string& message,
                        bool binary) {
  feeds.at(client)->onMessage(client, message, binary);
}

void LiveHub::onClose(const std::shared_ptr<WebClient>& client) {
  feeds.at(client)->onClose(client);
  feeds.erase(client);
}

}  // namespace QV::outlets
