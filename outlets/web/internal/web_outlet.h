#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "outlets/outlet.h"
#include "outlets/web/internal/web_handler.h"

namespace QV::outlets {

/** An outlet to the clients of some subprotocols of the WebSocket. Safe from any thread. */
class WebOutlet : public Outlet {
 public:
  virtual std::vector<std::string> getProtocols() const = 0;
  /** Finds what there is to GET at a path; nothing if there is none. */
  virtual std::optional<std::string> findContent(const std::string&) const { return std::nullopt; }

  virtual void onOpen(const std::shared_ptr<WebClient>& client) = 0;
  virtual void onMessage(const std::shared_ptr<WebClient>& client, const std::string& message,
                         bool binary) = 0;
  virtual void onClose(const std::shared_ptr<WebClient>& client) = 0;
};

}  // namespace QV::outlets
