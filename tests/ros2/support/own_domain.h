#pragma once

#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <sys/file.h>
#include <unistd.h>

#include "ros2/graph/graph.h"

namespace QV::test {

/** A domain that no other process that calls this is on, until this one ends. */
inline int ownDomain() {
  static const int domain = [] {
    constexpr int kDomains = 100;
    const auto folder = std::filesystem::temp_directory_path();
    for (int i = 0; i < kDomains; ++i) {
      const int number = 1 + (getpid() + i) % kDomains;
      const std::string path = folder / ("qv_domain_" + std::to_string(number) + ".lock");
      // The file stays open until the process ends; child programs don't hold it.
      const int file = open(path.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0666);
      if (file >= 0 && flock(file, LOCK_EX | LOCK_NB) == 0) return number;
      if (file >= 0) close(file);
    }
    throw std::runtime_error("a domain of the graph that no other test is on expected, none found");
  }();
  return domain;
}

/** A graph that no other process of this machine is on. */
inline ros2::GraphOptions aloneOn() {
  ros2::GraphOptions options;
  options.domain = ownDomain();
  return options;
}

}  // namespace QV::test
