#include "ros2/graph/internal/domain_settings.h"

#include <unistd.h>

namespace QV::ros2 {
namespace {

/**
 * The most participants on one machine that find each other by ports; the robot's own stacks have
 * many.
 */
constexpr int kMostParticipants = 32;

std::string escaped(const std::string& text) {
  std::string result;
  for (const char letter : text) {
    switch (letter) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '"':
        result += "&quot;";
        break;
      default:
        result += letter;
    }
  }
  return result;
}

std::string general(const GraphOptions& options) {
  std::string text = "<General>";
  // Peers with other DDS implementations on this machine announce only its network addresses, so a
  // participant on the loopback interface alone would not find them.
  if (!options.networkInterface.empty())
    text += "<Interfaces><NetworkInterface name=\"" + escaped(options.networkInterface) +
            "\"/></Interfaces>";
  if (options.range != DiscoveryRange::subnet) text += "<AllowMulticast>false</AllowMulticast>";
  return text + "</General>";
}

std::string peers(const GraphOptions& options) {
  std::string text;
  if (options.range == DiscoveryRange::localhost) text += "<Peer address=\"127.0.0.1\"/>";
  for (const auto& peer : options.peers) text += "<Peer address=\"" + escaped(peer) + "\"/>";
  return text.empty() ? "" : "<Peers>" + text + "</Peers>";
}

std::string discovery(const GraphOptions& options) {
  const std::string domain =
      "<ExternalDomainId>" + std::to_string(options.domain) + "</ExternalDomainId>";
  if (options.range == DiscoveryRange::off)
    return "<Discovery>" + domain + "<ParticipantIndex>none</ParticipantIndex><Tag>qv_off_" +
           std::to_string(::getpid()) + "</Tag></Discovery>";
  // Multicast discovery is not received in localhost mode, so discovery is sent every second.
  // In a network messages get lost, and the default of 30 s is long.
  const char* const calls = options.range == DiscoveryRange::localhost
                                ? "<SPDPInterval>1 s</SPDPInterval>"
                                : "<SPDPInterval>3 s</SPDPInterval>";
  return "<Discovery>" + domain + calls + "<ParticipantIndex>auto</ParticipantIndex>" +
         "<MaxAutoParticipantIndex>" + std::to_string(kMostParticipants) +
         "</MaxAutoParticipantIndex>" + peers(options) + "</Discovery>";
}

}  // namespace

std::string settingsOf(const GraphOptions& options) {
  // See Arrival: what the first participant has missed is asked for after this delay, and the
  // second one must be there by then.
  const std::string asking = "<PreEmptiveAckDelay>100 ms</PreEmptiveAckDelay>";
  // What a full receive buffer has dropped is sent again when a heartbeat was answered. By default
  // they come ever more seldom, and what is lost of many cameras' images is replaced before.
  const std::string repeating = "<HeartbeatInterval max=\"50 ms\">50 ms</HeartbeatInterval>";
  std::string text = "<CycloneDDS><Domain Id=\"any\">" + general(options) + discovery(options) +
                     "<Internal>" + asking + repeating + "</Internal></Domain></CycloneDDS>";
  if (!options.configuration.empty()) text += "," + options.configuration;
  return text;
}

}  // namespace QV::ros2
