#include "apps/watch/watch_view.h"

#include <algorithm>
#include <sstream>

#include "outlets/files/internal/table.h"
#include "platform/ko/log.h"
#include "session/internal/number_text.h"

namespace QV::app {
namespace {

constexpr char kKeyHelp[] =
    "up/down: choose   s: subscribe or not   e: enable or not   d: clear or set the diagnosis   "
    "q: quit";
// Title, header, note and keys.
constexpr int kOtherLines = 4;

// Bytes of one letter stay together.
std::string cropped(const std::string& text, int columns) {
  int letters = 0;
  std::size_t end = 0;
  for (; end < text.size(); ++end) {
    const bool begins = (static_cast<unsigned char>(text[end]) & 0xc0) != 0x80;
    if (begins && letters++ == columns) break;
  }
  return text.substr(0, end);
}

std::string yesOrNo(bool value) {
  return value ? "yes" : "no";
}

std::size_t countPoints(const session::SensorState& sensor) {
  std::size_t count = 0;
  for (const auto& record : sensor.records) count += record.points.size();
  return count;
}

std::string describeTrouble(const session::SensorState& sensor) {
  if (isFault(sensor.health.state)) return ko::log::onOneLine(sensor.health.reason);
  if (sensor.trouble.empty()) return {};
  return session::fixed(sensor.troubleAge, 0) + " s ago: " + ko::log::onOneLine(sensor.trouble);
}

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/** A screen in the making. */
class Screen {
 public:
  explicit Screen(const ScreenSize& size) : size(size) {}

  /** `style` is a number of the terminal's. */
  void add(const std::string& line, int style = 0) {
    if (lines == size.rows) return;
    ++lines;
    text += lines == 1 ? "\x1b[H" : "\r\n";
    text += "\x1b[" + std::to_string(style) + "m" + cropped(line, size.columns) + "\x1b[0m\x1b[K";
  }

  std::string finish() const { return text + "\x1b[J"; }

 private:
  const ScreenSize size;
  std::string text;
  int lines = 0;
};

constexpr int kBold = 1;
constexpr int kInverse = 7;

}  // namespace

std::string watchTable(const WatchState& state) {
  outlets::Table table({"sensor", "family", "enabled", "diagnosis", "started", ">subscribers",
                        ">points", ">nearest m", ">age s", "health", "why, or last trouble"});
  for (const auto& sensor : state.seen.sensors) {
    table.add({sensor.name, sensor.family, yesOrNo(sensor.enabled),
               sensor.diagnosis ? "good" : "bad", yesOrNo(sensor.started),
               std::to_string(sensor.subscribers.size()), std::to_string(countPoints(sensor)),
               sensor.nearest ? session::fixed(*sensor.nearest, 2) : "-",
               sensor.age ? session::fixed(*sensor.age, 2) : "-", getName(sensor.health.state),
               describeTrouble(sensor)});
  }
  std::ostringstream text;
  table.print(text);
  return text.str();
}

std::string watchScreen(const WatchState& state, const ScreenSize& size) {
  Screen screen(size);
  screen.add(state.seen.title + " at " + session::fixed(state.seen.pose.x, 2) + ", " +
                 session::fixed(state.seen.pose.y, 2) + " m, " +
                 session::fixed(state.seen.pose.theta, 2) + " rad",
             kBold);
  const auto lines = linesOf(watchTable(state));
  screen.add(lines[0], kBold);
  const auto room = static_cast<std::size_t>(std::max(size.rows - kOtherLines, 1));
  const std::size_t first = state.chosen < room ? 0 : state.chosen - room + 1;
  for (std::size_t i = first; i < std::min(first + room, state.seen.sensors.size()); ++i) {
    screen.add(lines[i + 1], i == state.chosen ? kInverse : 0);
  }
  screen.add(state.note);
  screen.add(kKeyHelp);
  return screen.finish();
}

}  // namespace QV::app
