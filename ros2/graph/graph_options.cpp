#include <algorithm>
#include <array>
#include <cstdlib>
#include <sstream>
#include <stdexcept>

#include "platform/ko/log.h"
#include "platform/model/internal/number_text.h"
#include "ros2/graph/graph.h"

namespace QV::ros2 {
namespace {

/** The ports of those between lie in the range that the system hands out, and there are none above.
 */
bool isDomain(int number) {
  return (number >= 0 && number <= 101) || (number >= 215 && number <= 232);
}

std::string variable(const char* name) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody here changes the environment.
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

[[noreturn]] void refuse(const char* name, const std::string& expected) {
  throw std::invalid_argument(std::string(name) + ": " + expected + " expected, \"" +
                              variable(name) + "\" given");
}

int readDomain() {
  const char* const name = "ROS_DOMAIN_ID";
  const std::string value = variable(name);
  if (value.empty()) return 0;
  const auto domain = Model::toInteger(value);
  if (!domain || !isDomain(*domain)) refuse(name, "a number from 0 to 101 or 215 to 232");
  return *domain;
}

DiscoveryRange readRange() {
  const char* const name = "ROS_AUTOMATIC_DISCOVERY_RANGE";
  const std::string value = variable(name);
  if (variable("ROS_LOCALHOST_ONLY") == "1") return DiscoveryRange::localhost;
  if (value == "OFF") return DiscoveryRange::off;
  if (value == "LOCALHOST") return DiscoveryRange::localhost;
  if (value == "SUBNET" || value == "SYSTEM_DEFAULT") return DiscoveryRange::subnet;
  if (!value.empty()) refuse(name, "OFF, LOCALHOST, SUBNET or SYSTEM_DEFAULT");
  // A CYCLONEDDS_URI implies the range SUBNET.
  return variable("CYCLONEDDS_URI").empty() ? DiscoveryRange::localhost : DiscoveryRange::subnet;
}

RosDistro readDistro() {
  const char* const name = "ROS_DISTRO";
  try {
    return parseDistro(variable(name));
  } catch (const std::invalid_argument& error) {
    ko::log::warning("ROS2.Graph", "options")
        << name << ": " << error.what() << ": taken for rolling";
    return RosDistro::ironOrLater;
  }
}

std::vector<std::string> readPeers() {
  std::istringstream text(variable("ROS_STATIC_PEERS"));
  std::vector<std::string> peers;
  for (std::string peer; std::getline(text, peer, ';');)
    if (!peer.empty()) peers.push_back(peer);
  return peers;
}

}  // namespace

RosDistro parseDistro(const std::string& name) {
  constexpr std::array kOld = {"ardent",   "bouncy", "crystal",  "dashing",
                               "eloquent", "foxy",   "galactic", "humble"};
  constexpr std::array kNew = {"", "iron", "jazzy", "kilted", "lyrical", "rolling"};
  if (std::ranges::count(kOld, name) > 0) return RosDistro::humble;
  if (std::ranges::count(kNew, name) > 0) return RosDistro::ironOrLater;
  throw std::invalid_argument(
      "a distribution expected (humble, iron, jazzy, kilted, lyrical; rolling for later ones), \"" +
      name + "\" given");
}

GraphOptions graphOptionsFromEnvironment() {
  GraphOptions options;
  options.domain = readDomain();
  options.range = readRange();
  options.distro = readDistro();
  options.peers = readPeers();
  options.configuration = variable("CYCLONEDDS_URI");
  return options;
}

}  // namespace QV::ros2
