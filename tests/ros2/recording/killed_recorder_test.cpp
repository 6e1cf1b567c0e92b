#include <algorithm>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <thread>
#include <unistd.h>

#include <gmock/gmock.h>

#include "ros2/bag/bag_reader.h"
#include "ros2/recording/session_recorder.h"
#include "tests/ros2/recording/recorded_session.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_folder.h"

namespace QV::ros2 {
namespace {

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr int kKills = 5;
#else
constexpr int kKills = 200;
#endif
constexpr int kCycles = 4;

/** The content of a recording that was cut after `size` bytes. */
struct Left {
  std::uint64_t messages = 0;
  /** The end of the last complete record (bytes). */
  std::size_t end = 0;
};

// A chunk counts by the indexes that follow it in the whole recording: 16 bytes for a message.
Left leftOf(const std::string& whole, std::size_t size) {
  constexpr char kChunk = 6;
  constexpr char kMessageIndex = 7;
  constexpr std::size_t kHead = 9;
  Left left{0, 8};
  bool isChunkWhole = false;
  for (std::size_t place = left.end; place + kHead < whole.size();) {
    std::uint64_t length = 0;
    std::memcpy(&length, whole.data() + place + 1, sizeof length);
    const std::size_t end = place + kHead + length;
    if (end <= size) left.end = end;
    if (whole[place] == kChunk) isChunkWhole = end <= size;
    if (whole[place] == kMessageIndex && isChunkWhole) left.messages += (length - 6) / 16;
    place = end;
  }
  return left;
}

/** Reads the file in one go, because reading by character is slow. */
std::string bytesIn(const std::string& path) {
  std::string bytes(std::filesystem::file_size(path), '\0');
  std::ifstream(path, std::ios::binary)
      .read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return bytes;
}

struct KilledRecorderTest : testing::Test {
  /** Drives, and records in small chunks: there are many places to be killed at. */
  void record(session::Session& own) const {
    RecorderOptions options;
    options.bag.chunkSize = 16'000;
    SessionRecorder recorder(path, own, options);
    own.subscribe("test", own.getManager().getFamilyNames());
    own.drive(0.3f, 0.2f);
    for (int cycle = 0; cycle < kCycles; ++cycle) {
      own.run(boost::chrono::milliseconds(100));
      recorder.show(own.look());
    }
  }

  /** A recording of which so many bytes were in the file, or some more. */
  std::string killAt(session::Session& own, std::size_t size) const {
    std::filesystem::remove(path);
    test::ChildProcess process;
    process.start([&] {
      record(own);
      pause();
    });
    std::error_code ignored;
    for (std::uintmax_t now = 0; now < size;) {
      now = std::filesystem::file_size(path, ignored);
      if (ignored) now = 0;
      std::this_thread::yield();
    }
    process.signal(SIGKILL);
    process.awaitEnd();
    return bytesIn(path);
  }

  const test::TemporaryFolder folder;
  const std::string path = folder / "run.mcap";
};

TEST_F(KilledRecorderTest, leavesAllCompleteChunksWheneverItIsKilled) {
  record(*session::openVirtual("porter", test::busyWorld()));
  const std::string whole = bytesIn(path);
  // Each child goes on from here with a copy of its own.
  auto session = session::openVirtual("porter", test::busyWorld());
  std::minstd_rand random(7);
  for (int kill = 0; kill < kKills; ++kill) {
    const std::string cut =
        killAt(*session, std::uniform_int_distribution<std::size_t>(8, whole.size() - 1)(random));
    ASSERT_TRUE(whole.starts_with(cut));
    const Left left = leftOf(whole, cut.size());
    const BagInfo sut = readBagInfo(path);
    ASSERT_EQ(sut.count, left.messages);
    if (cut == whole) continue;
    const auto says = [&](std::size_t byte) {
      return testing::HasSubstr(path + ": byte " + std::to_string(byte) + ": ");
    };
    // Killed within the index behind the messages, it misses the magic at the end alone.
    ASSERT_THAT(sut.damage.lines,
                testing::Contains(testing::AnyOf(says(left.end), says(cut.size()))));
  }
  session.reset();
  EXPECT_EQ(test::compareSession(path).difference, "");
}

}  // namespace
}  // namespace QV::ros2
