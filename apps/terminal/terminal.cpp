#include "apps/terminal/terminal.h"

#include <array>
#include <cerrno>
#include <poll.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <unistd.h>

#include "apps/interrupt.h"
#include "platform/ko/internal/write_error.h"
#include "session/usage_error.h"

namespace QV::app {
namespace {

constexpr char kEnter[] = "\x1b[?1049h\x1b[?25l";
constexpr char kLeave[] = "\x1b[0m\x1b[?25h\x1b[?1049l";

bool writeAll(int output, std::string_view text) {
  while (!text.empty()) {
    const auto written = write(output, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace

void checkTerminal(int input, int output) {
  if (isatty(output) != 1) {
    throw session::UsageError(
        "standard output: a terminal expected; --once prints one table anywhere");
  }
  if (isatty(input) != 1) {
    throw session::UsageError(
        "standard input: a terminal expected, for the keys; --once needs none");
  }
}

const Terminal* Terminal::shown = nullptr;

Terminal::Terminal(int input, int output) : input(input), output(output) {
  checkTerminal(input, output);
  catchStops();
  xEnter();
  shown = this;
  setTidyBeforeEnd([] { shown->xLeave(); });
}

Terminal::~Terminal() {
  setTidyBeforeEnd(nullptr);
  xLeave();
  letStops();
}

void Terminal::xEnter() {
  tcgetattr(input, &before);
  termios raw = before;
  raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
  raw.c_cc[VQUIT] = _POSIX_VDISABLE;
  tcsetattr(input, TCSANOW, &raw);
  writeAll(output, kEnter);
}

void Terminal::xLeave() const {
  writeAll(output, kLeave);
  tcsetattr(input, TCSANOW, &before);
}

void Terminal::xStop() {
  xLeave();
  stopHere();
  xEnter();
}

ScreenSize Terminal::getSize() const {
  winsize size{};
  const bool known = ioctl(output, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 && size.ws_row > 0;
  return known ? ScreenSize{size.ws_col, size.ws_row} : ScreenSize{80, 24};
}

void Terminal::show(const std::string& text) const {
  if (!writeAll(output, text)) throw std::runtime_error(ko::detail::cannotWrite("standard output"));
}

std::vector<Key> Terminal::readKeys(int milliseconds) {
  if (takeStop()) xStop();
  pollfd wanted{input, POLLIN, 0};
  if (poll(&wanted, 1, milliseconds) <= 0) return {};
  std::array<char, 64> bytes;
  const auto count = ::read(input, bytes.data(), bytes.size());
  if (count < 0 && errno == EINTR) return {};
  if (count <= 0) return {Key::quit};
  return reader.feed({bytes.data(), static_cast<std::size_t>(count)});
}

}  // namespace QV::app
