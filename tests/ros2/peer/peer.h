#pragma once

#include <algorithm>
#include <cstdio>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "tests/ros2/peer/written_messages.h"
#include "tests/ros2/support/own_domain.h"
#include "tests/ros2/support/watched.h"
#include "tests/support/child_process.h"

namespace QV::ros2 {

/** Another maker's participant, in a process of its own. */
class Peer {
 public:
  explicit Peer(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {ROS2_PEER, std::to_string(test::ownDomain())});
    std::vector<char*> argv;
    for (auto& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    process.start([&] {
      dup2(ends[1], STDOUT_FILENO);
      execv(ROS2_PEER, argv.data());
    });
    close(ends[1]);
    out = fdopen(ends[0], "r");
    thread = std::thread([this] { xRead(); });
  }
  ~Peer() {
    process.signal(SIGKILL);
    thread.join();
    fclose(out);
  }

  /** Lets a peer that reads drive, too. */
  void drive() { process.signal(SIGUSR1); }

  bool awaitReady() {
    return lines.awaitThat([](const Lines& said) { return said.isReady; });
  }
  struct Lines {
    bool isReady = false;
    /** Digests of messages, by topics. */
    std::map<std::string, std::set<std::uint64_t>> got;
    /** Bytes of user data. */
    std::multimap<std::string, int> seen;
  };
  Lines get() { return lines.get(); }
  /** Waits until the last message of each topic that it reads has come. */
  bool awaitLast(const std::map<std::string, test::Written>& written) {
    return lines.awaitThat([&](const Lines& said) {
      return std::ranges::all_of(said.got, [&](const auto& got) {
        return got.second.count(written.at(got.first).last) > 0;
      });
    });
  }
  /** Drops the topics of which a message has come. */
  void dropGot(std::set<std::string>& topics) {
    lines.change([&](const Lines& said) {
      std::erase_if(topics, [&](const auto& topic) { return said.got.count(topic) > 0; });
    });
  }

 private:
  void xRead() {
    char text[1000];
    while (fgets(text, sizeof text, out) != nullptr) {
      std::istringstream line(text);
      std::string what, topic;
      std::uint64_t number = 0;
      line >> what >> topic >> number;
      lines.change([&](Lines& said) {
        if (what == "ready") said.isReady = true;
        if (what == "got") said.got[topic].insert(number);
        if (what == "seen") said.seen.emplace(topic, static_cast<int>(number));
      });
    }
  }

  test::Watched<Lines> lines;
  test::ChildProcess process;
  FILE* out = nullptr;
  std::thread thread;
};

}  // namespace QV::ros2
