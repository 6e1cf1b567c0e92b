#pragma once

#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <stdexcept>
#include <string>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace QV::app {

/** A terminal of our own: what is written to one side is read from the other. */
class PseudoTerminal {
 public:
  PseudoTerminal() {
    winsize size{30, 200, 0, 0};
    if (openpty(&outer, &inner, nullptr, nullptr, &size) != 0) {
      throw std::runtime_error("no pseudo terminal");
    }
    fcntl(outer, F_SETFD, FD_CLOEXEC);
    tcgetattr(inner, &before);
  }
  ~PseudoTerminal() {
    close(outer);
    close(inner);
  }

  void resize(unsigned short rows, unsigned short columns) const {
    const winsize size{rows, columns, 0, 0};
    ioctl(outer, TIOCSWINSZ, &size);
  }

  void type(const std::string& keys) const {
    if (write(outer, keys.data(), keys.size()) < 0) throw std::runtime_error("can't type");
  }

  /** Reads on until `expected` is shown, and forgets what came before it; false if it never is. */
  bool shows(const std::string& expected) {
    // The screen is drawn again and again: text that is missing after this much output won't come.
    constexpr int kPatienceMs = 60'000;
    constexpr std::size_t kMostBytes = 4 << 20;
    while (shown.size() < kMostBytes) {
      const auto found = shown.find(expected);
      if (found != std::string::npos) {
        shown.erase(0, found + expected.size());
        return true;
      }
      pollfd wanted{outer, POLLIN, 0};
      if (poll(&wanted, 1, kPatienceMs) <= 0) return false;
      char bytes[4096];
      const auto count = read(outer, bytes, sizeof bytes);
      if (count <= 0) return false;
      shown.append(bytes, static_cast<std::size_t>(count));
    }
    return false;
  }

  /** True if keys echo and lines wait for their end, as when it was made. */
  bool isAsBefore() const {
    termios now{};
    tcgetattr(inner, &now);
    return now.c_lflag == before.c_lflag &&
           std::memcmp(now.c_cc, before.c_cc, sizeof now.c_cc) == 0;
  }

  int outer = -1;
  int inner = -1;

 private:
  termios before{};
  std::string shown;
};

}  // namespace QV::app
