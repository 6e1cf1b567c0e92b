#include "apps/watch/watch_view.h"

#include <algorithm>
#include <sstream>
#include <vector>

#include "apps/terminal/key.h"
#include "tests/robot/world/room.h"
#include "tests/support/vocabulary.h"

namespace QV::app {
namespace {

WatchState exampleState() {
  WatchState state;
  state.chosen = 1;
  state.note = "Sonar: disabled";
  state.seen.title = "Robot";
  state.seen.time = ko::Clock::time_point(milliseconds(3000));
  state.seen.pose = {1.0f, 2.0f, 0.5f};
  session::SensorState laser{"Laser", "Laser", false, true, false, {"a", "b"}};
  laser.trouble = "no \x1b[2J\nscan";
  laser.troubleAge = 3.4;
  session::SensorState sonar{"Sonar", "Sonar", true, false, true, {"a"}};
  sonar.age = 0.25;
  sonar.health = {sensor::HealthState::late, {}, "its record is old", "wait", 2};
  sonar.nearest = 0.5f;
  sonar.records.resize(1);
  sonar.records[0].points.resize(15);
  state.seen.sensors = {laser, sonar};
  return state;
}

/** Returns what each line of a screen shows, its style before it. */
std::vector<std::string> linesOf(const std::string& screen) {
  std::string text = screen.substr(screen.find("\x1b[H") + 3);
  text.erase(text.rfind("\x1b[J"));
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line.substr(0, line.find("\x1b[0m\x1b[K")));
  }
  return lines;
}

long countLetters(const std::string& text) {
  return std::ranges::count_if(text, [](char byte) { return (byte & 0xc0) != 0x80; });
}

TEST(WatchView, aTableShowsEverySensor) {
  WatchState state = exampleState();
  state.seen.unbuilt["Left"] = {sensor::HealthState::failing, {}, "it could not be built", {}, 1};
  EXPECT_EQ(watchTable(state),
            "sensor  family  enabled  diagnosis  started  subscribers  points  nearest m  age s  "
            "health   reason, or last error\n"
            "Laser   Laser   yes      bad        no                 2       0          -      -  "
            "off      3 s ago: no \\x1b[2J\\nscan\n"
            "Sonar   Sonar   no       good       yes                1      15       0.50   0.25  "
            "late     its record is old (for 3.0 s, 2 times so far)\n"
            "Left                                                                                "
            "failing  it could not be built (for 3.0 s)\n");
}

TEST(WatchView, aScreenShowsTheChosenSensorTheNoteAndTheKeys) {
  EXPECT_THAT(
      linesOf(watchScreen(exampleState(), {200, 24})),
      ElementsAre(
          "\x1b[1mRobot at 1.00, 2.00 m, 0.50 rad", StartsWith("\x1b[1msensor  "),
          StartsWith("\x1b[31mLaser  "), StartsWith("\x1b[31;7mSonar  "),
          "\x1b[0mSonar: disabled; its record is old (for 3.0 s, 2 times so far). To fix: wait",
          HasSubstr("q: quit")));
}

TEST(WatchView, aShiftedMapsCoordinatesAreThoseOfItsFile) {
  WatchState state = exampleState();
  const auto map = test::makeRoom();
  map->setShift({450'000.0, 5'400'000.0});
  state.seen.map = map;
  EXPECT_THAT(watchScreen(state, {200, 24}), HasSubstr("Robot at 450001.00, 5400002.00 m"));
}

TEST(WatchView, aScreenIsNeverLargerThanItsTerminal) {
  const WatchState state = exampleState();
  for (int rows = 1; rows < 8; ++rows) {
    for (const int columns : {1, 20, 200}) {
      const auto lines = linesOf(watchScreen(state, {columns, rows}));
      EXPECT_LE(lines.size(), static_cast<std::size_t>(rows));
      for (const auto& line : lines)
        EXPECT_LE(countLetters(line.substr(line.find('m') + 1)), columns);
    }
  }
  const std::string low = watchScreen(state, {200, 5});
  EXPECT_THAT(low, HasSubstr("\x1b[31;7mSonar"));
  EXPECT_THAT(low, Not(HasSubstr("mLaser")));
}

TEST(WatchView, an80ColumnScreenShowsNearestReasonAndKeys) {
  WatchState state = exampleState();
  auto& sound = state.seen.sensors.emplace_back(state.seen.sensors[1]);
  sound.name = "PeoplePerception";
  sound.health = {sensor::HealthState::sound, {}, {}};
  const auto lines = linesOf(watchScreen(state, {80, 24}));
  EXPECT_THAT(lines[1], HasSubstr("nearest m"));
  EXPECT_THAT(lines[1], Not(HasSubstr("subscribers")));
  EXPECT_THAT(lines[2], HasSubstr("3 s ago: no \\x1b[2J\\nscan"));
  EXPECT_THAT(lines[3], HasSubstr("its record is old"));
  EXPECT_THAT(lines[4], StartsWith("\x1b[0mPeoplePerception  "));
  EXPECT_THAT(lines[6], testing::EndsWith("q: quit"));
  const auto narrow = linesOf(watchScreen(state, {40, 24}));
  EXPECT_THAT(narrow[3], testing::EndsWith("\u2026"));
  EXPECT_THAT(narrow[6], testing::EndsWith("q:quit"));
}

TEST(WatchView, a60ColumnTableIsContinuedBelow) {
  WatchState state = exampleState();
  state.seen.sensors[1].health.reason = "its record is 0.62 s old, and the limit is 0.40 s";
  EXPECT_EQ(watchTable(state, 60),
            "sensor  nearest m  health  reason, or last error\n"
            "Laser           -  off     3 s ago: no \\x1b[2J\\nscan\n"
            "Sonar        0.50  late    its record is 0.62 s old, and the\n"
            "                           limit is 0.40 s (for 3.0 s, 2\n"
            "                           times so far)\n");
}

TEST(KeyReader, readsSplitEscapeSequencesAndSkipsUnknownOnes) {
  KeyReader sut;
  EXPECT_THAT(sut.feed("\x1b"), ElementsAre());
  EXPECT_THAT(sut.feed("["), ElementsAre());
  EXPECT_THAT(sut.feed("A\x1bOBx\x1b[5~s"), ElementsAre(Key::up, Key::down, Key::subscribe));
  EXPECT_THAT(sut.feed("\x1b\x1b[Bed\x1b[q"),
              ElementsAre(Key::down, Key::enable, Key::diagnose, Key::quit));
}

}  // namespace
}  // namespace QV::app
