#include "outlets/web/internal/web_guard.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>

#include "session/usage_error.h"

namespace QV::outlets {
namespace {

std::string lowered(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) {
    return static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  });
  return text;
}

// "name:80" and "[::1]:80" without the port, and the brackets.
std::string nameOf(const std::string& host) {
  if (host.rfind('[', 0) == 0) return host.substr(1, host.find(']') - 1);
  return host.substr(0, host.find(':'));
}

// Returns the host of "scheme://host:port"; empty for anything else.
std::string hostOf(const std::string& origin) {
  const auto end = origin.find("://");
  if (end == std::string::npos || end == 0) return {};
  const std::string host = origin.substr(end + 3);
  const auto isOdd = [](unsigned char c) { return c <= ' ' || std::strchr("/?#@", c) != nullptr; };
  return std::any_of(host.begin(), host.end(), isOdd) ? std::string() : host;
}

// An IP address in the one form that browsers use; empty for anything else.
std::string addressIn(const std::string& text) {
  unsigned char bytes[sizeof(in6_addr)];
  char canonical[INET6_ADDRSTRLEN];
  for (const int family : {AF_INET, AF_INET6}) {
    if (inet_pton(family, text.c_str(), bytes) == 1) {
      return inet_ntop(family, bytes, canonical, sizeof canonical);
    }
  }
  return {};
}

}  // namespace

WebGuard::WebGuard(const std::string& address, const std::vector<std::string>& given)
    : anyAddress(addressIn(address) == "0.0.0.0" || addressIn(address) == "::"),
      names{"localhost", "127.0.0.1", "::1", addressIn(address)} {
  for (const std::string& origin : given) {
    const std::string name = lowered(origin);
    const std::string host = hostOf(name);
    if (host.empty()) {
      throw session::UsageError(
          "--allow-origin: an origin such as https://viewer.example expected, \"" + origin +
          "\" given");
    }
    origins.insert(name);
    if (name.starts_with("http://")) hosts.insert(host);
  }
}

std::string WebGuard::findFault(const std::string& host, const std::string& origin) const {
  if (!xIsOurs(lowered(host))) {
    return "This server only answers requests to its own address. Use the address that the program "
           "printed.";
  }
  const std::string from = lowered(origin);
  if (from.empty() || from == "http://" + lowered(host) || origins.count(from) > 0) return {};
  return "Pages of other sites may not connect; allow one with --allow-origin.";
}

// The owner of a name can point it to any address, so names must be known; an address can't be
// faked.
bool WebGuard::xIsOurs(const std::string& host) const {
  if (hosts.count(host) > 0) return true;
  const std::string name = nameOf(host);
  const std::string address = addressIn(name);
  if (address.empty()) return !name.empty() && names.count(name) > 0;
  return anyAddress || names.count(address) > 0;
}

bool isLoopback(const std::string& address) {
  const std::string canonical = addressIn(address);
  return canonical == "::1" || canonical.starts_with("127.");
}

}  // namespace QV::outlets
