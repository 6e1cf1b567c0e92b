#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <unistd.h>

#include "apps/replay/machine_pace.h"
#include "ros2/bag/bag_reader.h"
#include "ros2/messages/report_msgs.h"
#include "tests/apps/pseudo_terminal.h"
#include "tests/apps/run_program.h"
#include "tests/support/child_process.h"
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

/** A copy of a recording in which one record is of another family. */
std::string changedCopy(const std::string& from, const std::string& to) {
  ros2::BagReader reader(from, ros2::BagOrder::file);
  ros2::BagWriter writer(to);
  for (const auto& [name, values] : reader.getMetadata()) writer.addMetadata(name, values);
  for (std::size_t i = 0; i < reader.getAttachmentCount(); ++i)
    writer.addAttachment(*reader.readAttachment(i));
  std::map<std::string, std::uint16_t> topics;
  bool isChanged = false;
  while (const auto message = reader.next()) {
    const auto& topic = *message->topic;
    if (!topics.contains(topic.name)) topics[topic.name] = writer.addTopic(topic);
    ros2::Bytes data(message->data.begin(), message->data.end());
    if (topic.name == "/qv/records" && !isChanged) {
      auto look = ros2::fromCdr<ros2::qv_msgs::Records>(data);
      isChanged = !look.records.empty();
      if (isChanged) look.records.front().family_name = "Nobody";
      data = ros2::toCdr(look);
    }
    writer.write(topics[topic.name], message->logTime, message->publishTime, data);
  }
  return to;
}

struct BadComparison {
  std::vector<std::string> arguments;
  std::string expected;
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

  EXPECT_THAT(run({"recover", cut, "-o", "-"}).error, HasSubstr("Recovered "));

  // The content decides the type, not the name.
  const std::string renamed = folder / "run.log";
  std::filesystem::copy_file(path, renamed);
  const std::string again = folder / "again.mcap";
  EXPECT_THAT(run({"replay", path, "-o", again}).out, HasSubstr("Wrote " + again));
  for (const std::string& file : {path, whole, renamed, again}) {
    const Result compared = run({"replay", file, "--compare"});
    EXPECT_EQ(compared.status, 0) << compared.error;
    EXPECT_THAT(compared.out, HasSubstr("snapshots are equal, bit for bit"));
  }
}

TEST_F(RecordingTest, fromAndToChooseWhatIsShown) {
  drive(path);
  const auto countOf = [&](std::vector<std::string> options) {
    std::vector<std::string> arguments = {"replay", path, "--compare"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const std::string out = run(arguments).out;
    return std::stoul(out.substr(std::min(out.find_first_of("0123456789"), out.size())));
  };
  const std::size_t all = countOf({});
  const std::size_t first = countOf({"--to", "1"});
  EXPECT_GT(first, 0u);
  EXPECT_EQ(first + countOf({"--from", "1.01"}), all);
  expectRefused({{"replay", path, "--from", "-1"}, "--from: seconds from 0 on expected, -1"});
  expectRefused({{"replay", path, "--speed", "0"}, "--speed: a number above 0 expected, 0"});
}

// A busy machine may take longer, never less.
TEST_F(RecordingTest, aSpeedKeepsTheReplayToTheMachinesClock) {
  drive(path);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(run({"replay", path, "--speed", "1"}).status, 0);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(960));
  EXPECT_EQ(MachinePace(4.0).scale(2.0), std::chrono::milliseconds(500));
}

TEST_F(RecordingTest, aTerminalShowsHowFarTheReplayIs) {
  drive(path);
  PseudoTerminal terminal;
  test::ChildProcess process;
  process.start([&] {
    dup2(terminal.inner, STDERR_FILENO);
    execl(QVSENSORS, QVSENSORS, "replay", path.c_str(), "-o", (folder / "a.csv").c_str(), nullptr);
  });
  for (const char* const bar : {"\rReplaying [###", "###...", "#] 100 %\r\n"})
    EXPECT_TRUE(terminal.shows(bar)) << bar;
  EXPECT_EQ(process.awaitEnd(), 0);
}

TEST_F(RecordingTest, anIncompleteComparisonExitsWith1) {
  drive(path);
  const std::string cut = folder / "cut.mcap";
  std::filesystem::copy_file(path, cut);
  std::filesystem::resize_file(cut, std::filesystem::file_size(path) * 2 / 3);
  std::string bytes = test::readBytes(path);
  const auto lastChunk = bytes.rfind("\x28\xb5\x2f\xfd");
  ASSERT_NE(lastChunk, std::string::npos);
  bytes[lastChunk + 100] ^= 1;
  const std::string damaged = folder.write("damaged.mcap", bytes);
  const BadComparison cases[] = {
      {{cut}, "snapshots are equal, bit for bit.\nThe recording is damaged"},
      {{damaged}, " snapshots could not be compared.\n"},
      {{path, "--from", "1000"}, "There was no snapshot to compare.\n"},
      {{changedCopy(path, folder / "changed.mcap")}, ": familyName: recorded "},
  };
  for (const auto& [arguments, expected] : cases) {
    std::vector<std::string> all{"replay", "--compare"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const Result result = run(all);
    EXPECT_EQ(result.status, 1) << result.error;
    EXPECT_THAT(result.out, HasSubstr(expected));
  }
  EXPECT_THAT(run({"replay", damaged}).error,
              testing::AllOf(HasSubstr("chunk skipped: CRC is wrong"),
                             HasSubstr(" snapshots were skipped")));
}

TEST_F(RecordingTest, aLoopShowsEachPassAsItComes) {
  drive(path);
  for (const char* const format : {"table", "csv", "jsonl"}) {
    test::ChildProcess process;
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    process.start([&] {
      dup2(ends[1], STDOUT_FILENO);
      execl(QVSENSORS, QVSENSORS, "replay", path.c_str(), "--loop", "--format", format, nullptr);
    });
    close(ends[1]);
    std::ifstream out("/dev/fd/" + std::to_string(ends[0]));
    // A line that comes once in a pass; the titles of CSV come once in all.
    std::string once;
    std::string line;
    std::getline(out, once);
    if (format == std::string("csv")) std::getline(out, once);
    while (std::getline(out, line) && line != once) continue;
    EXPECT_EQ(line, once) << format;
    process.signal(SIGINT);
    while (std::getline(out, line)) continue;
    EXPECT_EQ(process.awaitEnd(), 128 + SIGINT) << format;
    close(ends[0]);
  }
}

TEST_F(RecordingTest, aPlayedRecordingIsNeverOverwritten) {
  const std::string log = folder.write("log", "FLASER 1 1.0 0 0 0 0 0 0 1.0 host 1.0\n");
  std::filesystem::create_directory(folder / "bag");
  const std::string inside = folder / "bag/part.mcap";
  drive(inside);
  std::filesystem::create_hard_link(inside, path);
  const std::string bytes = test::readBytes(inside);
  for (const auto& [read, written] :
       {std::pair{path, path}, {inside, path}, {folder / "bag", inside}, {log, log}}) {
    expectRefused({{"replay", read, "-o", written}, written + ": is being played"});
  }
  expectRefused(
      {{"recover", folder / "bag", "-o", inside}, inside + ": is the recording to recover"});
  EXPECT_EQ(test::readBytes(inside), bytes);
  EXPECT_GT(std::filesystem::file_size(log), 0u);
}

TEST_F(RecordingTest, recordsGoToStandardOutputAndTheSummaryToStandardError) {
  const Result result = run({"drive", "--kind", "1", "--path", "3,3 3.2,3", "-o", "-"});
  EXPECT_GT(recordsIn(result.out).size(), 5u);
  EXPECT_THAT(result.error, HasSubstr("readings (10 Hz"));
}

}  // namespace
}  // namespace QV::app
