#pragma once

#include <arpa/inet.h>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <memory>
#include <net/if.h>
#include <poll.h>
#include <random>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "tests/ros2/network/network.h"

namespace QV::test {

/**
 * Carries all that goes out of one interface of a network into another one, and back; some of it
 * gets lost, and all of it later. Kernels without a queue that does so are many.
 */
class Cable {
 public:
  Cable(const Network& network, const std::string& left, const std::string& right)
      : ends{network.run([&] { return xOpen(left); }), network.run([&] { return xOpen(right); })},
        carrying([this] { xCarry(); }) {}
  ~Cable() {
    isOver = true;
    carrying.join();
    for (const int end : ends) close(end);
  }

  bool isThere() const { return ends[0] >= 0 && ends[1] >= 0; }
  void beBad(bool on) { isBad = on; }
  void cut(bool on) { isCut = on; }
  /** Frames that got lost because it is bad. */
  int getLostCount() const { return lost; }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr double kLoss = 0.05;
  static constexpr std::chrono::milliseconds kDelay{20};
  /** More than any frame, and what says how its checksum is to be made. */
  static constexpr std::size_t kMost = 70'000;

  struct Frame {
    Clock::time_point due;
    int end;
    std::vector<std::uint8_t> bytes;
  };

  static int xOpen(const std::string& interface) {
    const int end = socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, htons(ETH_P_ALL));
    const int on = 1;
    const int room = 1 << 24;
    setsockopt(end, SOL_PACKET, PACKET_VNET_HDR, &on, sizeof on);
    setsockopt(end, SOL_PACKET, PACKET_IGNORE_OUTGOING, &on, sizeof on);
    setsockopt(end, SOL_SOCKET, SO_RCVBUFFORCE, &room, sizeof room);
    sockaddr_ll address{};
    address.sll_family = AF_PACKET;
    address.sll_protocol = htons(ETH_P_ALL);
    address.sll_ifindex = static_cast<int>(if_nametoindex(interface.c_str()));
    const auto* const any = reinterpret_cast<const sockaddr*>(&address);
    return address.sll_ifindex > 0 && bind(end, any, sizeof address) == 0 ? end : -1;
  }

  void xCarry() {
    while (!isOver) {
      std::array<pollfd, 2> ready{{{ends[0], POLLIN, 0}, {ends[1], POLLIN, 0}}};
      poll(ready.data(), ready.size(), frames.empty() ? 20 : 1);
      for (std::size_t i = 0; i < ends.size(); ++i)
        if ((ready[i].revents & POLLIN) != 0) xTake(ends[i], ends[1 - i]);
      for (; !frames.empty() && frames.front().due <= Clock::now(); frames.pop_front()) {
        const auto& bytes = frames.front().bytes;
        send(frames.front().end, bytes.data(), bytes.size(), MSG_DONTWAIT);
      }
    }
  }

  void xTake(int from, int to) {
    for (;;) {
      std::vector<std::uint8_t> bytes(kMost);
      const ssize_t size = recv(from, bytes.data(), bytes.size(), MSG_DONTWAIT);
      if (size <= 0) return;
      if (isCut || (isBad && xLoses())) continue;
      bytes.resize(static_cast<std::size_t>(size));
      frames.push_back({isBad ? Clock::now() + kDelay : Clock::now(), to, std::move(bytes)});
    }
  }

  bool xLoses() {
    const bool loses = chance(random) < kLoss;
    if (loses) ++lost;
    return loses;
  }

  const std::array<int, 2> ends;
  std::mt19937 random{7};
  std::uniform_real_distribution<double> chance;
  std::deque<Frame> frames;
  std::atomic<int> lost{0};
  std::atomic<bool> isBad{false};
  std::atomic<bool> isCut{false};
  std::atomic<bool> isOver{false};
  std::thread carrying;
};

/** Two networks, as of two machines, and what joins them. */
struct TwoNetworks {
  TwoNetworks() {
    if (!robot.isThere() || !middle.isThere() || !tool.isThere()) return;
    isThere = middle.addPair("left", robot, "eth0") && middle.addPair("right", tool, "eth0");
    for (const auto& [network, address] : {std::pair(&robot, "1"), std::pair(&tool, "2")}) {
      isThere = isThere &&
                network->ip(std::string("addr add 10.231.7.") + address + "/24 dev eth0") &&
                network->ip("link set eth0 up") && network->ip("link set lo up");
    }
    isThere = isThere && middle.ip("link set left up") && middle.ip("link set right up");
    if (isThere) cable = std::make_unique<Cable>(middle, "left", "right");
    isThere = cable && cable->isThere();
  }

  const Network robot, middle, tool;
  bool isThere = false;
  std::unique_ptr<Cable> cable;
};

}  // namespace QV::test
