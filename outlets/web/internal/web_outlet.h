#pragma once

#include <string>
#include <vector>

#include "outlets/outlet.h"
#include "outlets/web/internal/web_handler.h"

namespace QV::outlets {

/** An outlet to the clients of some subprotocols of the WebSocket. Thread-safe. */
class WebOutlet : public Outlet, public WebListener {
 public:
  virtual std::vector<std::string> getProtocols() const = 0;
};

}  // namespace QV::outlets
