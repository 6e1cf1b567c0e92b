#pragma once

#include <set>
#include <string>
#include <vector>

#include "platform/api.h"

namespace QV::outlets {

/** Keeps pages of other sites from using a server on this machine. Immutable. */
class QV_API WebGuard {
 public:
  /**
   * Guards a server at `address`. Pages of `origins` such as "https://viewer.example" may connect,
   * too; host and port of one that begins with "http://" count as the server's own. Throws
   * UsageError for an invalid origin.
   */
  WebGuard(const std::string& address, const std::vector<std::string>& origins);

  /**
   * Finds why a request is refused, empty if it is not: its Host must be an address of this server,
   * its Origin, if it has one, that Host or one that is let in.
   */
  std::string findFault(const std::string& host, const std::string& origin) const;

 private:
  bool xIsOurs(const std::string& host) const;

  const bool anyAddress;
  /** Names and addresses, with any port. */
  std::set<std::string> names;
  /** The hosts with their ports. */
  std::set<std::string> hosts;
  std::set<std::string> origins;
};

/** True if only this machine reaches `address`. */
QV_API bool isLoopback(const std::string& address);

}  // namespace QV::outlets
