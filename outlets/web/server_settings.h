#pragma once

#include <string>
#include <vector>

namespace QV::outlets {

/** Where a server listens, and whom it lets in. */
struct ServerSettings {
  /** To listen at: an IP address. */
  std::string address = "127.0.0.1";
  /** 0 takes any that is free. */
  unsigned short port = 8765;
  /** Let in beside its own, such as "https://viewer.example". */
  std::vector<std::string> origins = {};
};

}  // namespace QV::outlets
