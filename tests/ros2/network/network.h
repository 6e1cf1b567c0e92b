#pragma once

#include <cstdlib>
#include <fcntl.h>
#include <future>
#include <sched.h>
#include <string>
#include <unistd.h>

namespace QV::test {

/** A network of this process alone, without an interface at first; gone with the process. */
class Network {
 public:
  Network() {
    std::async(std::launch::async, [this] {
      if (unshare(CLONE_NEWNET) == 0) file = open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
    }).get();
  }
  ~Network() {
    if (file >= 0) close(file);
  }
  Network(const Network&) = delete;
  Network& operator=(const Network&) = delete;

  /** False without the permission to make network namespaces. */
  bool isThere() const { return file >= 0; }
  /** The thread that calls it is in this network from now on, with all sockets that it opens. */
  bool enter() const { return setns(file, CLONE_NEWNET) == 0; }
  /** Runs `act` on a thread inside the network. */
  template <typename Act>
  auto run(const Act& act) const {
    return std::async(std::launch::async,
                      [&] {
                        enter();
                        return act();
                      })
        .get();
  }
  /** The tool of iproute2. */
  bool ip(const std::string& arguments) const {
    return run([&] { return std::system(("ip " + arguments + " 2>/dev/null").c_str()) == 0; });
  }
  /** An interface here and its other end there. */
  bool addPair(const std::string& name, const Network& there, const std::string& nameThere) const {
    const std::string path =
        "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(there.file);
    return ip("link add " + name + " type veth peer name " + nameThere + " netns " + path);
  }

 private:
  int file = -1;
};

}  // namespace QV::test
