#include <charconv>
#include <cmath>

#include "session/shared_files.h"
#include "tests/apps/run_program.h"
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

/** Counts the numbers that are shifted, to a millimetre; expects all others to be the same. */
std::size_t countShifted(const Parts& atZero, const Parts& inUtm) {
  EXPECT_EQ(atZero.words, inUtm.words);
  if (atZero.numbers.size() != inUtm.numbers.size()) return 0;
  std::size_t same = 0;
  std::size_t shifted = 0;
  for (std::size_t i = 0; i < atZero.numbers.size(); ++i) {
    const double off = inUtm.numbers[i] - atZero.numbers[i];
    if (off == 0.0) ++same;
    if (std::abs(off - kEast) < 0.0006 || std::abs(off - kNorth) < 0.0006) ++shifted;
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

/** A command; `position` stands in its output as often as that has positions. */
struct ShiftedRun {
  std::vector<std::string> command;
  std::string atZero;
  std::string inUtm;
  std::string position;
};

TEST_F(ShiftOriginTest, aMapInUtmCoordinatesGivesTheRecordsOfTheSameMapAtZero) {
  const std::string pose = "--pose=3.125,6.25,0.5";
  const std::string utmPose = "--pose=450003.125,5400006.25,0.5";
  const std::string record = "\"sensorName\"";
  const ShiftedRun runs[] = {
      {{"read", "--subscribe", "Sonar"}, pose, utmPose, "Sonar/"},
      {{"read", "--subscribe", "Sonar", "--format", "csv"}, pose, utmPose, "\"Sonar/"},
      {{"read", "--subscribe", "Sonar", "--format", "json"}, pose, utmPose, record},
      {{"read", "--robot", "porter", "--subscribe", "Sonar", "--format", "jsonl"},
       pose,
       utmPose,
       record},
      // Standard error tells a free pose, and that a pose is a bad one; the table has that, too.
      {{"list", "--health"}, "--kind=0", "--kind=0", "x,y,theta"},
      {{"read", "--subscribe", "Laser", "--kind=-1"},
       "--pose=-3.5,1.25,0",
       "--pose=449996.5,5400001.25,0",
       "1.25"},
      {{"stream", "--subscribe", "Sonar", "--for", "0.5", "--speed", "max"}, pose, utmPose, record},
      {{"drive", "--robot", "porter", "--subscribe", "Sonar", "--rate", "2", "-o", "-"},
       "--path=3,6.25 3.125,6.25",
       "--path=450003,5400006.25 450003.125,5400006.25",
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
    const std::size_t positions = countOf(expected, each.position);
    EXPECT_GT(positions, 0u) << expected;
    EXPECT_EQ(countShifted(Parts(expected), Parts(output)), 2 * positions)
        << testing::PrintToString(each.command);
  }
}

TEST_F(ShiftOriginTest, mapInfoAndAPictureAreThoseOfTheSameMapAtZero) {
  const auto infoOf = [](const std::string& map, const std::string& option) {
    auto info = nlohmann::json::parse(run({"map", "info", map, "--format", "json", option}).out);
    info.erase("path");
    return Parts(info.dump());
  };
  EXPECT_EQ(countShifted(infoOf(near, "--quiet"), infoOf(utm, "--shift-origin=450000,5400000")),
            8u);
  const auto pictureOf = [this](const std::string& pose, const std::string& map) {
    const std::string file = folder / "scan.png";
    run({"plot", "-o", file, "--pose", pose, "--map", map, "--shift-origin"});
    return test::readBytes(file);
  };
  const std::string atZero = pictureOf("3.125,6.25,0.5", near);
  EXPECT_FALSE(atZero.empty());
  EXPECT_TRUE(pictureOf("450003.125,5400006.25,0.5", utm) == atZero);
}

}  // namespace
}  // namespace QV::app
