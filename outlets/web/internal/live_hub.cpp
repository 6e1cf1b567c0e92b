#include "outlets/web/internal/live_hub.h"

#include <algorithm>

namespace QV::outlets {

LiveHub::LiveHub(std::vector<std::shared_ptr<WebOutlet>> all) {
  outlets[""] = all.front();
  for (const auto& outlet : all) {
    for (const std::string& protocol : outlet->getProtocols()) outlets[protocol] = outlet;
  }
}

std::optional<std::string> LiveHub::chooseProtocol(const std::string& path,
                                                   const std::vector<std::string>& offered) const {
  if (path != "/live" && path != "/") return std::nullopt;
  if (offered.empty() && path == "/live") return "";
  const auto known = std::find_if(offered.begin(), offered.end(), [this](const auto& protocol) {
    return !protocol.empty() && outlets.count(protocol) > 0;
  });
  if (known == offered.end()) return std::nullopt;
  return *known;
}

std::optional<std::string> LiveHub::findContent(const std::string& path) const {
  for (const auto& [protocol, outlet] : outlets) {
    if (auto content = outlet->findContent(path)) return content;
  }
  return std::nullopt;
}

void LiveHub::onOpen(const std::shared_ptr<WebClient>& client) {
  xOutletOf(*client).onOpen(client);
}

void LiveHub::onMessage(const std::shared_ptr<WebClient>& client, const std::string& message,
                        bool binary) {
  xOutletOf(*client).onMessage(client, message, binary);
}

void LiveHub::onClose(const std::shared_ptr<WebClient>& client) {
  xOutletOf(*client).onClose(client);
}

}  // namespace QV::outlets
