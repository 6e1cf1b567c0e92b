#include "apps/watch/watch_view.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <sstream>

#include "apps/output/health_text.h"
#include "outlets/files/internal/table.h"
#include "platform/ko/log.h"
#include "platform/navigation/internal/map_shift.h"
#include "session/internal/number_text.h"

namespace QV::app {
namespace {

// The first that there is room for.
constexpr const char* kKeyHelps[] = {
    ("up/down: choose   s: subscribe/unsubscribe   e: enable/disable   d: diagnosis good/bad   "
     "q: quit"),
    "up/down: choose   s: subscribe   e: enable   d: diagnosis   q: quit",
    "up/down s:subscribe e:enable d:diagnosis q:quit", "up/down s e d q:quit"};
// Title, header, note and keys.
constexpr int kOtherLines = 4;

bool beginsLetter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xc0) != 0x80;
}

// Bytes of one letter stay together; the last letter of a cut line is an ellipsis.
std::string cropped(const std::string& text, int columns) {
  if (std::ranges::count_if(text, beginsLetter) <= columns) return text;
  int letters = 0;
  const auto cut = std::ranges::find_if(
      text, [&](char byte) { return beginsLetter(byte) && letters++ == columns - 1; });
  return std::string(text.begin(), cut) + (columns > 0 ? "\u2026" : "");
}

std::string yesOrNo(bool value) {
  return value ? "yes" : "no";
}

std::size_t countPoints(const session::SensorState& sensor) {
  std::size_t count = 0;
  for (const auto& record : sensor.records) count += record.points.size();
  return count;
}

std::string describeTrouble(const session::SensorState& sensor, ko::Clock::time_point now) {
  if (isFault(sensor.health.state)) return healthText(sensor.health, now);
  if (sensor.trouble.empty()) return {};
  return session::fixed(sensor.troubleAge, 0) + " s ago: " + ko::log::onOneLine(sensor.trouble);
}

const char* keyHelpFor(int columns) {
  const char* const* const found = std::ranges::find_if(kKeyHelps, [columns](const char* help) {
    return std::strlen(help) <= static_cast<std::size_t>(columns);
  });
  return found == std::end(kKeyHelps) ? *std::prev(found) : *found;
}

/** A screen in the making. */
class Screen {
 public:
  explicit Screen(const ScreenSize& size) : size(size) {}

  /** `style` as the terminal takes it. */
  void add(const std::string& line, const std::string& style = "0") {
    if (lines == size.rows) return;
    ++lines;
    text += lines == 1 ? "\x1b[H" : "\r\n";
    text += "\x1b[" + style + "m" + cropped(line, size.columns) + "\x1b[0m\x1b[K";
  }

  std::string finish() const { return text + "\x1b[J"; }

 private:
  const ScreenSize size;
  std::string text;
  int lines = 0;
};

constexpr char kBold[] = "1";
constexpr char kUnbuilt[] = "31";

/** Inverse where keys mean it; red where something is wrong. */
std::string styleOf(const session::SensorState& sensor, bool isChosen) {
  const bool isBad = isFault(sensor.health.state) || !sensor.diagnosis;
  if (isChosen) return isBad ? "31;7" : "7";
  return isBad ? "31" : "0";
}

outlets::Table watchTableOf(const WatchState& state) {
  outlets::Table table({"sensor", "family", "enabled", "diagnosis", "started", ">subscribers",
                        ">points", ">nearest m", ">age s", "health", "reason, or last error"});
  for (const auto& sensor : state.seen.sensors) {
    table.add({sensor.name, sensor.family, yesOrNo(sensor.enabled),
               sensor.diagnosis ? "good" : "bad", yesOrNo(sensor.started),
               std::to_string(sensor.subscribers.size()), std::to_string(countPoints(sensor)),
               sensor.nearest ? session::fixed(*sensor.nearest, 2) : "-",
               sensor.age ? session::fixed(*sensor.age, 2) : "-", getName(sensor.health.state),
               describeTrouble(sensor, state.seen.time)});
  }
  for (const auto& [name, health] : state.seen.unbuilt) {
    table.add({name, "", "", "", "", "", "", "", "", getName(health.state),
               healthText(health, state.seen.time)});
  }
  table.dropFirst(
      {"family", "subscribers", "points", "started", "enabled", "diagnosis", "age s", "health"});
  return table;
}

// The table may cut the reason of the chosen sensor; here it has a line, and the remedy.
std::string noteOf(const WatchState& state) {
  if (state.chosen >= state.seen.sensors.size()) return state.note;
  const session::SensorState& sensor = state.seen.sensors[state.chosen];
  std::string trouble = describeTrouble(sensor, state.seen.time);
  if (!trouble.empty() && !sensor.health.remedy.empty())
    trouble += ". To fix: " + sensor.health.remedy;
  return state.note.empty() || trouble.empty() ? state.note + trouble : state.note + "; " + trouble;
}

}  // namespace

std::string watchTable(const WatchState& state, std::size_t columns) {
  std::ostringstream text;
  watchTableOf(state).print(text, columns);
  return text.str();
}

std::string watchScreen(const WatchState& state, const ScreenSize& size) {
  Screen screen(size);
  const MapShift shift = state.seen.getShift();
  screen.add(state.seen.title + " at " + session::fixed(unshifted(state.seen.pose.x, shift.x), 2) +
                 ", " + session::fixed(unshifted(state.seen.pose.y, shift.y), 2) + " m, " +
                 session::fixed(state.seen.pose.theta, 2) + " rad",
             kBold);
  const auto lines = watchTableOf(state).getLines(static_cast<std::size_t>(size.columns));
  screen.add(lines[0], kBold);
  const auto room = static_cast<std::size_t>(std::max(size.rows - kOtherLines, 1));
  const std::size_t first = state.chosen < room ? 0 : state.chosen - room + 1;
  const std::size_t sensors = state.seen.sensors.size();
  for (std::size_t i = first; i < std::min(first + room, lines.size() - 1); ++i) {
    screen.add(lines[i + 1],
               i < sensors ? styleOf(state.seen.sensors[i], i == state.chosen) : kUnbuilt);
  }
  screen.add(noteOf(state));
  screen.add(keyHelpFor(size.columns));
  return screen.finish();
}

}  // namespace QV::app
