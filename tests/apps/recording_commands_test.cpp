#include <filesystem>

#include "tests/apps/run_program.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/vocabulary.h"

namespace QV::app {
namespace {

/** A short drive of a virtual robot, as a file. */
struct RecordingTest : testing::Test {
  void drive(const std::string& file) {
    const Result result =
        run({"drive", "--robot", "porter", "--path", "3,3 3.2,3", "--rate", "5", "-o", file});
    ASSERT_EQ(result.status, 0) << result.error;
    EXPECT_THAT(result.out, HasSubstr("Wrote " + file));
  }

  const test::TemporaryFolder folder;
  const std::string path = folder / "run.mcap";
};

TEST_F(RecordingTest, aDriveIsRecordedDescribedRecoveredAndComparedAgain) {
  drive(path);
  const Result info = run({"info", path, "--format", "json"});
  const auto told = nlohmann::json::parse(info.out);
  EXPECT_EQ(told["robot"], "Virtual robot porter");
  EXPECT_THAT(told["sensors"], testing::Contains("FrontLaser"));
  EXPECT_EQ(told["damage"]["chunks"], 0);
  EXPECT_THAT(run({"info", path}).out, HasSubstr("/FrontLaser/scan"));

  const std::string cut = folder / "cut.mcap";
  std::filesystem::copy_file(path, cut);
  std::filesystem::resize_file(cut, std::filesystem::file_size(path) * 2 / 3);
  const std::string whole = folder / "whole.mcap";
  EXPECT_THAT(run({"recover", cut, "-o", whole}).out, HasSubstr("Recovered "));

  for (const std::string& file : {path, whole}) {
    const Result compared = run({"replay", file, "--compare"});
    EXPECT_EQ(compared.status, 0) << compared.error;
    EXPECT_THAT(compared.out, HasSubstr("looks are the same, bit for bit"));
  }
}

TEST_F(RecordingTest, fromAndToChooseWhatIsShown) {
  drive(path);
  const auto countOf = [&](std::vector<std::string> options) {
    std::vector<std::string> arguments = {"replay", path, "--format", "json"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return recordsIn(run(arguments).out).size();
  };
  const std::size_t all = countOf({});
  const std::size_t first = countOf({"--to", "1"});
  EXPECT_GT(first, 0u);
  EXPECT_EQ(first + countOf({"--from", "1.01"}), all);
  expectRefused({{"replay", path, "--from", "-1"}, "--from: seconds from 0 on expected, -1"});
  expectRefused({{"replay", path, "--speed", "0"}, "--speed: a number above 0 expected, 0"});
}

TEST_F(RecordingTest, recordsGoToStandardOutputAndTheSummaryElsewhere) {
  const Result result = run({"drive", "--kind", "1", "--path", "3,3 3.2,3", "-o", "-"});
  EXPECT_GT(recordsIn(result.out).size(), 5u);
  EXPECT_THAT(result.error, HasSubstr("cycles at 10 Hz"));
}

}  // namespace
}  // namespace QV::app
