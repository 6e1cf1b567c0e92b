#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "outlets/web/internal/web_handler.h"
#include "outlets/web/live_feed.h"

namespace QV::outlets {

/** Hands each client to the feed of its subprotocol. The feeds must outlive it. */
class LiveHub : public WebHandler {
 public:
  /** Without a subprotocol a client of the path /live gets `pages`. */
  LiveHub(LiveFeed& pages, LiveFeed& viewers) : pages(pages), viewers(viewers) {}

  std::optional<std::string> chooseProtocol(const std::string& path,
                                            const std::vector<std::string>& offered) const override;
  void onOpen(const std::shared_ptr<WebClient>& client, const std::string& protocol) override;
  void onMessage(const std::shared_ptr<WebClient>& client, const std::string& message,
                 bool binary) override;
  void onClose(const std::shared_ptr<WebClient>& client) override;

 private:
  LiveFeed& pages;
  LiveFeed& viewers;
  std::map<std::shared_ptr<WebClient>, LiveFeed*> feeds;
};

}  // namespace QV::outlets
