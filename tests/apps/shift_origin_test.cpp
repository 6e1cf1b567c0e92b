#include <charconv>
#include <cmath>

#include "session/shared_files.h"
#include "tests/apps/run_program.h"
#include "tests/robot/world/room.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/vocabulary.h"

namespace QV::app {
namespace {

constexpr double kEast = 450'000.0;
constexpr double kNorth = 5'400'000.0;

/** The numbers of a text, and the rest of it without blanks. */
struct Parts {
  explicit Parts(const std::string& text) {
    const char* const end = text.data() + text.size();
    for (const char* next = text.data(); next != end;) {
      double number = 0.0;
      const auto [rest, error] = std::from_chars(next, end, number);
      if (error == std::errc()) numbers.push_back(number);
      if (error != std::errc() && *next != ' ') words.push_back(*next);
      next = error == std::errc() ? rest : next + 1;
    }
  }

  std::string words;
  std::vector<double> numbers;
};

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

/**
 * Counts the numbers that are shifted to a millimetre, east and north in turn; expects all others
 * to be the same.
 */
std::size_t countShifted(const Parts& atZero, const Parts& inUtm) {
  EXPECT_EQ(atZero.words, inUtm.words);
  if (atZero.numbers.size() != inUtm.numbers.size()) return 0;
  std::size_t same = 0;
  std::size_t shifted = 0;
  for (std::size_t i = 0; i < atZero.numbers.size(); ++i) {
    const double off = inUtm.numbers[i] - atZero.numbers[i];
    const double shift = shifted % 2 == 0 ? kEast : kNorth;
    if (off == 0.0) ++same;
    if (std::abs(off - shift) < 0.0006) ++shifted;
  }
  EXPECT_EQ(same + shifted, atZero.numbers.size());
  return shifted;
}

/** A map at zero, and the same in UTM coordinates. */
struct ShiftOriginTest : testing::Test {
  std::string mapAt(const std::string& name, const std::string& origin) {
    const std::string image = session::findSharedFile("maps/apartment.pgm");
    return folder.write(name, "image: " + image + "\nresolution: 0.05\norigin: " + origin +
                                  "\nnegate: 0\noccupied_thresh: 0.65\nfree_thresh: 0.196\n");
  }

  const test::TemporaryFolder folder;
  const std::string near = mapAt("near.yaml", "[0, 0, 0]");
  const std::string utm = mapAt("utm.yaml", "[450000.0, 5400000.0, 0]");
};

/** A command; `position` stands in its output as often as that has positions, if it has some. */
struct ShiftedRun {
  std::vector<std::string> command;
  std::string atZero;
  std::string inUtm;
  std::string position;
};

TEST_F(ShiftOriginTest, aMapInUtmCoordinatesGivesTheRecordsOfTheSameMapAtZero) {
  // A float has steps of 0.03 m there.
  const std::string pose = "--pose=3.13,6.27,0.5";
  const std::string utmPose = "--pose=450003.13,5400006.27,0.5";
  const std::string record = "\"sensorName\"";
  const ShiftedRun runs[] = {
      {{"read", "--subscribe", "Sonar"}, pose, utmPose, "Sonar/"},
      {{"read", "--subscribe", "Sonar", "--format", "csv"}, pose, utmPose, "\"Sonar/"},
      {{"read", "--subscribe", "Sonar", "--format", "json"}, pose, utmPose, record},
      {{"read", "--robot", "porter", "--subscribe", "Sonar", "--format", "jsonl"},
       pose,
       utmPose,
       record},
      // In the robot's frame.
      {{"read", "--robot", "porter", "--subscribe", "Sonar"}, pose, utmPose, ""},
      // A note has the free pose that was found.
      {{"list", "--health"}, "--kind=0", "--kind=0", "x,y,theta"},
      // A warning has a bad pose, and the table that of the sensor.
      {{"read", "--subscribe", "Laser", "--kind=-1"},
       "--pose=-3.53,1.27,0",
       "--pose=449996.47,5400001.27,0",
       "1.27"},
      {{"stream", "--subscribe", "Sonar", "--for", "0.5", "--speed", "max"}, pose, utmPose, record},
      {{"drive", "--robot", "porter", "--subscribe", "Sonar", "--rate", "2", "-o", "-"},
       "--path=3,6.27 3.13,6.27",
       "--path=450003,5400006.27 450003.13,5400006.27",
       record},
  };
  for (const ShiftedRun& each : runs) {
    const auto outputOn = [&](std::vector<std::string> more) {
      more.insert(more.begin(), each.command.begin(), each.command.end());
      const Result result = run(more);
      EXPECT_EQ(result.status, 0) << result.error;
      return result.out + result.error;
    };
    const std::string expected = outputOn({each.atZero, "--map", near});
    const std::string output = outputOn({each.inUtm, "--map", utm, "--shift-origin"});
    const std::size_t positions = each.position.empty() ? 0 : countOf(expected, each.position);
    EXPECT_EQ(positions > 0, !each.position.empty()) << expected;
    EXPECT_EQ(countShifted(Parts(expected), Parts(output)), 2 * positions)
        << testing::PrintToString(each.command);
  }
}

TEST_F(ShiftOriginTest, aRecordingIsReplayedInTheCoordinatesOfTheFile) {
  const auto drive = [this](const std::string& path, const std::string& map) {
    const std::string recording = folder / "run.mcap";
    const std::string copy = folder / "copy.mcap";
    const std::string from =
        run({"drive", "--robot", "porter", "--subscribe", "Sonar", "--rate", "2", "--path", path,
             "--map", map, "--shift-origin", "-o", recording})
            .error;
    EXPECT_EQ(run({"replay", recording, "-o", copy}).status, 0) << from;
    const std::string out = run({"replay", recording, "--format", "jsonl"}).out;
    EXPECT_EQ(run({"replay", copy, "--format", "jsonl"}).out, out);
    return out;
  };
  const std::string atZero = drive("3,6.27 3.13,6.27", near);
  const std::size_t positions = countOf(atZero, "\"robotPose\"");
  EXPECT_GT(positions, 0u);
  const std::string inUtm = drive("450003,5400006.27 450003.13,5400006.27", utm);
  EXPECT_EQ(countShifted(Parts(atZero), Parts(inUtm)), 2 * positions);
}

TEST_F(ShiftOriginTest, aProgramsOwnMapIsNotShifted) {
  session::OpenOptions robots;
  const auto map = test::makeRoom();
  map->setShift({450'000.0, 5'400'000.0});
  robots.map = map;
  const std::vector<std::string> read{
      "read", "--subscribe", "Sonar", "--format", "jsonl", "--pose", "450003.13,5400004.27,0"};
  EXPECT_THAT(run(read, "own", robots).out, HasSubstr("450003.13"));
  auto shifted = read;
  shifted.push_back("--shift-origin");
  const Result result = run(shifted, "own", robots);
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.error, HasSubstr("--shift-origin: a map's file expected, this program has"));
}

TEST_F(ShiftOriginTest, anErrorNamesTheFileOfTheMap) {
  folder.write("full.pgm", "P5 20 20 255\n" + std::string(400, '\0'));
  const std::string full =
      folder.write("full.yaml",
                   "image: full.pgm\nresolution: 0.05\norigin: [450000, 5400000, 0]\nnegate: 0\n"
                   "occupied_thresh: 0.65\nfree_thresh: 0.196\n");
  const Result result = run({"read", "--robot", "porter", "--people", "3", "--map", full,
                             "--shift-origin", "--pose", "450000.5,5400000.5,0"});
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.error, HasSubstr(" in " + full + ": "));
}

TEST_F(ShiftOriginTest, mapInfoAndAPictureAreThoseOfTheSameMapAtZero) {
  const auto infoOf = [](const std::string& map, const std::string& option) {
    auto info = nlohmann::json::parse(run({"map", "info", map, "--format", "json", option}).out);
    EXPECT_EQ(info["shift"].dump(),
              option == "--quiet" ? "null" : R"({"x":450000.0,"y":5400000.0})");
    info.erase("path");
    info.erase("shift");
    return Parts(info.dump());
  };
  EXPECT_THAT(run({"map", "info", utm, "--shift-origin"}).out,
              HasSubstr("450000.000,5400000.000 (m, m): there"));
  EXPECT_EQ(countShifted(infoOf(near, "--quiet"), infoOf(utm, "--shift-origin=450000,5400000")),
            8u);
  const auto pictureOf = [](const std::string& file, const std::string& pose,
                            const std::string& map) {
    EXPECT_EQ(run({"plot", "-o", file, "--pose", pose, "--map", map, "--shift-origin"}).status, 0);
    return test::readBytes(file);
  };
  const std::string atZero = pictureOf(folder / "near.png", "3.13,6.27,0.5", near);
  EXPECT_FALSE(atZero.empty());
  EXPECT_TRUE(pictureOf(folder / "utm.png", "450003.13,5400006.27,0.5", utm) == atZero);
}

}  // namespace
}  // namespace QV::app
