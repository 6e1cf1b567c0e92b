/** Publishes a recording on the graph of ROS_DOMAIN_ID, as fast as it was, again and again: for
 * trying out by hand what reads a graph. */
#include <chrono>
#include <exception>
#include <iostream>
#include <optional>
#include <thread>

#include "tests/ros2/player/bag_player.h"

namespace {

void play(const std::string& path) {
  using Clock = std::chrono::steady_clock;
  QV::ros2::Graph graph;
  const auto node = graph.createNode("play_bag");
  QV::test::BagPlayer player(path, *node);
  std::optional<std::uint64_t> last;
  for (auto due = Clock::now();;) {
    const std::uint64_t time = player.playNext();
    if (last && time > *last) due += std::chrono::nanoseconds(time - *last);
    last = time;
    std::this_thread::sleep_until(due);
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc == 2) play(argv[1]);
    std::cerr << "play_bag FILE\n";
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
  }
  return 2;
}
