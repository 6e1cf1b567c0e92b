#include "ros2/bag/bag_writer.h"

#include <atomic>
#include <csignal>
#include <filesystem>
#include <malloc.h>
#include <new>
#include <random>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "ros2/bag/bag_reader.h"
#include "tests/ros2/bag/small_bag.h"
#include "tests/support/log_capture.h"

namespace QV::ros2 {
namespace {

using namespace test;

struct BagWriterTest : testing::Test {
  const test::TemporaryFolder folder;
  const std::string path = folder / "run.mcap";
};

TEST_F(BagWriterTest, theSameCallsGiveTheSameBytesAndReadBackCompletely) {
  for (const auto compression : {Compression::none, Compression::lz4, Compression::zstd}) {
    for (const char* const name : {"run.mcap", "again.mcap"}) {
      SmallBag sut(folder / name, {compression});
      sut.write(250);
      sut.writer.addMetadata("robot", {{"name", "porter"}, {"seed", "7"}});
      sut.writer.addAttachment({"map.pgm", "image/x-portable-graymap", 5, 6, {1, 2, 3}});
    }
    EXPECT_EQ(test::readBytes(path), test::readBytes(folder / "again.mcap"));
    EXPECT_EQ(numbersIn(path), numbersFrom(0, 249));
    BagReader reader(path);
    EXPECT_EQ(reader.getMetadata().at(1).values.at("seed"), "7");
    EXPECT_EQ(reader.readAttachment(0)->data, Bytes({1, 2, 3}));
    EXPECT_TRUE(reader.getDamage().lines.empty());
  }
}

TEST_F(BagWriterTest, theFileIsReadableWhileItIsWritten) {
  SmallBag sut(path, {Compression::none, std::size_t{1} << 20, kSecond});
  sut.write(10);
  EXPECT_EQ(numbersIn(path), numbersFrom(0, -1));
  sut.write(1);  // A second after the first.
  EXPECT_EQ(numbersIn(path), numbersFrom(0, 9));
  sut.writer.flush();
  EXPECT_EQ(numbersIn(path), numbersFrom(0, 10));
  sut.writer.write(sut.texts, 11 * kSecond, 11 * kSecond, Bytes(100));
  sut.writer.write(sut.texts, 11 * kSecond, 11 * kSecond, Bytes(2'000'000));
  EXPECT_EQ(readBagInfo(path).count, 12u);  // Too much for one chunk.
}

// Chunk after chunk for hours: what is to stand at the end of the file does not wait in memory.
TEST_F(BagWriterTest, theIndexOfALongRecordingWaitsOnTheDisk) {
  constexpr int kChunks = 40'000;
  constexpr std::size_t kMost = std::size_t{2} << 20;
  {
    SmallBag sut(path, {Compression::none, 1});
    const std::size_t before = mallinfo2().uordblks;
    sut.write(kChunks);
    EXPECT_LT(mallinfo2().uordblks, before + kMost);
    using Entries = std::filesystem::directory_iterator;
    EXPECT_EQ(std::distance(Entries(folder.string()), Entries()), 1);
  }
  BagReader reader(path);
  EXPECT_EQ(reader.getCount("/text"), kChunks / 2);
  EXPECT_EQ(numbersIn(reader), numbersFrom(0, kChunks - 1));
  reader.checkWhole();
  EXPECT_TRUE(reader.getDamage().lines.empty());
}

/** No file may grow beyond `bytes` in its scope. */
class FullDisk {
 public:
  explicit FullDisk(rlim_t bytes) : handler(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &former);
    const rlimit limit{bytes, former.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &former);
    std::signal(SIGXFSZ, handler);
  }

 private:
  void (*handler)(int);
  rlimit former{};
};

TEST_F(BagWriterTest, aFullDiskEndsTheRecordingWithOneError) {
  test::LogCapture log;
  {
    const FullDisk disk(8000);
    SmallBag sut(path, {Compression::none, 500});
    std::vector<std::string> errors;
    for (int i = 0; i < 300; ++i) {
      try {
        sut.write(1);
      } catch (const std::runtime_error& error) {
        errors.push_back(error.what());
      }
    }
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_THAT(errors[0], testing::MatchesRegex(".*run.mcap: File too large after 7[0-9]+ bytes"));
    EXPECT_EQ(sut.writer.addTopic(makeBagTopic("/late", std_msgs::String::getType())), 2);
    EXPECT_THROW(sut.writer.write(3, 0, 0, {}), std::out_of_range);
  }
  EXPECT_TRUE(log.lines().empty());
  const std::vector<int> numbers = numbersIn(path);
  EXPECT_GT(numbers.size(), 40u);
  EXPECT_EQ(numbers, numbersFrom(0, static_cast<int>(numbers.size()) - 1));
  EXPECT_THROW(BagWriter("/dev/full"), std::runtime_error);
}

/** The part of a recording that a killed process leaves behind. */
struct Progress {
  std::atomic<int> flushed{0};
};

/** Tells `pipe` when there are `enough`, and goes on. */
[[noreturn]] void writeUntilKilled(const std::string& path, Progress& progress, int enough,
                                   int pipe) {
  SmallBag bag(path, {Compression::zstd, 700});
  std::uint64_t size = bag.writer.getSize();
  while (true) {
    bag.write(1);
    if (bag.written == enough) [[maybe_unused]]
      const ssize_t told = ::write(pipe, "", 1);
    // When the file grows, it holds all messages but the last.
    if (bag.writer.getSize() > size) progress.flushed = bag.written - 1;
    size = bag.writer.getSize();
  }
}

TEST_F(BagWriterTest, allCompleteChunksSurviveAKill) {
  void* const memory =
      mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  int pipe[2];
  ASSERT_EQ(::pipe(pipe), 0);
  std::minstd_rand random(7);
  for (int round = 0; round < 200; ++round) {
    auto& progress = *new (memory) Progress;
    const int enough = std::uniform_int_distribution(1, 100)(random);
    std::filesystem::remove(path);
    const pid_t child = fork();
    if (child == 0) writeUntilKilled(path, progress, enough, pipe[1]);
    char told = 0;
    ASSERT_EQ(::read(pipe[0], &told, 1), 1);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    const std::vector<int> numbers = numbersIn(path);
    ASSERT_GE(static_cast<int>(numbers.size()), progress.flushed.load());
    ASSERT_EQ(numbers, numbersFrom(0, static_cast<int>(numbers.size()) - 1));
  }
  ::close(pipe[0]);
  ::close(pipe[1]);
  munmap(memory, sizeof(Progress));
}

}  // namespace
}  // namespace QV::ros2
