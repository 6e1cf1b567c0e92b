#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "outlets/web/internal/web_handler.h"
#include "outlets/web/internal/web_outlet.h"
#include "platform/api.h"

namespace QV::outlets {

/** Hands each client to the outlet of its subprotocol. */
class QV_API LiveHub : public WebHandler {
 public:
  /** Takes one outlet or more; without a subprotocol a client of the path /live gets the first. */
  explicit LiveHub(std::vector<std::shared_ptr<WebOutlet>> outlets);

  std::optional<std::string> chooseProtocol(const std::string& path,
                                            const std::vector<std::string>& offered) const override;
  std::optional<std::string> findContent(const std::string& path) const override;
  void onOpen(const std::shared_ptr<WebClient>& client) override;
  void onMessage(const std::shared_ptr<WebClient>& client, const std::string& message,
                 bool binary) override;
  void onClose(const std::shared_ptr<WebClient>& client) override;

 private:
  WebOutlet& xOutletOf(const WebClient& client) const { return *outlets.at(client.protocol); }

  /** The outlets by subprotocol, "" for none. */
  std::map<std::string, std::shared_ptr<WebOutlet>> outlets;
};

}  // namespace QV::outlets
