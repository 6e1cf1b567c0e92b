#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <stdexcept>
#include <string>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

#include <gmock/gmock.h>

#include "apps/terminal/terminal.h"
#include "session/shared_files.h"
#include "tests/apps/run_program.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_folder.h"

namespace QV::app {
namespace {

using testing::HasSubstr;

/** A terminal of our own: what is written to one side is read from the other. */
class PseudoTerminal {
 public:
  PseudoTerminal() {
    winsize size{30, 200, 0, 0};
    if (openpty(&outer, &inner, nullptr, nullptr, &size) != 0) {
      throw std::runtime_error("no pseudo terminal");
    }
    fcntl(outer, F_SETFD, FD_CLOEXEC);
    tcgetattr(inner, &before);
  }
  ~PseudoTerminal() {
    close(outer);
    close(inner);
  }

  void resize(unsigned short rows, unsigned short columns) const {
    const winsize size{rows, columns, 0, 0};
    ioctl(outer, TIOCSWINSZ, &size);
  }

  void type(const std::string& keys) const {
    if (write(outer, keys.data(), keys.size()) < 0) throw std::runtime_error("can't type");
  }

  /** Reads on until `expected` is shown, and forgets what came before it; false if it never is. */
  bool shows(const std::string& expected) {
    // The screen is drawn again and again: text that is missing after this much output won't come.
    constexpr int kPatienceMs = 60'000;
    constexpr std::size_t kMostBytes = 4 << 20;
    while (shown.size() < kMostBytes) {
      const auto found = shown.find(expected);
      if (found != std::string::npos) {
        shown.erase(0, found + expected.size());
        return true;
      }
      pollfd wanted{outer, POLLIN, 0};
      if (poll(&wanted, 1, kPatienceMs) <= 0) return false;
      char bytes[4096];
      const auto count = read(outer, bytes, sizeof bytes);
      if (count <= 0) return false;
      shown.append(bytes, static_cast<std::size_t>(count));
    }
    return false;
  }

  /** True if keys echo and lines wait for their end, as when it was made. */
  bool isAsBefore() const {
    termios now{};
    tcgetattr(inner, &now);
    return now.c_lflag == before.c_lflag &&
           std::memcmp(now.c_cc, before.c_cc, sizeof now.c_cc) == 0;
  }

  int outer = -1;
  int inner = -1;

 private:
  termios before{};
  std::string shown;
};

/** `qvsensors watch` in a process and a terminal of its own. */
class WatchTest : public testing::Test {
 protected:
  void start(const std::string& record = {}) {
    const std::string robot = session::findSharedFile("descriptions/porter.urdf");
    process.start([&] {
      login_tty(terminal.inner);
      execl(QVSENSORS, QVSENSORS, "watch", "--still", "--robot", robot.c_str(), "--fault",
            "FrontLaser:off", record.empty() ? nullptr : "--record", record.c_str(), nullptr);
    });
  }

  void expectEnd(int status) {
    ASSERT_TRUE(terminal.shows("\x1b[?25h\x1b[?1049l"));
    EXPECT_EQ(process.awaitEnd(), status);
    EXPECT_TRUE(terminal.isAsBefore());
  }

  PseudoTerminal terminal;
  test::ChildProcess process;
};

TEST_F(WatchTest, keysChooseASensorAndSwitchIt) {
  start();
  ASSERT_TRUE(terminal.shows("\x1b[?1049h\x1b[?25l"));
  EXPECT_FALSE(terminal.isAsBefore());
  ASSERT_TRUE(terminal.shows("\x1b[7mBackSonar         Sonar      yes      good       yes"));
  ASSERT_TRUE(terminal.shows("Timeout while setting operation Mode for FrontLaser"));
  terminal.type("e");
  EXPECT_TRUE(terminal.shows("\x1b[7mBackSonar         Sonar      no       good       no "));
  EXPECT_TRUE(terminal.shows("BackSonar: disabled"));
  terminal.type("\x1b[B");
  EXPECT_TRUE(terminal.shows("\x1b[7mBlindZone         BlindZone  yes      good       yes"));
  terminal.type("d");
  EXPECT_TRUE(terminal.shows("\x1b[31;7mBlindZone         BlindZone  yes      bad        no "));
  terminal.type("d");
  EXPECT_TRUE(terminal.shows("\x1b[7mBlindZone         BlindZone  yes      good       yes"));
  terminal.type("s");
  EXPECT_TRUE(terminal.shows("\x1b[7mBlindZone         BlindZone  yes      good       no "));
  EXPECT_TRUE(terminal.shows("BlindZone: unsubscribed"));
  terminal.resize(30, 12);
  EXPECT_TRUE(terminal.shows("\x1b[7mBlindZone   \x1b[0m"));
  terminal.type("q");
  expectEnd(0);
}

TEST_F(WatchTest, signalsLeaveTheTerminalAsItWasAndTheRecordingWhole) {
  const test::TemporaryFolder folder;
  const std::string path = folder / "run.mcap";
  for (const int signal : {SIGINT, SIGTERM}) {
    start(path);
    // The second wait shows that it waits for keys: the thread sanitizer loses a signal that
    // arrives
    // while a thread begins to wait for the first time.
    ASSERT_TRUE(terminal.shows("\x1b[7mBackSonar"));
    ASSERT_TRUE(terminal.shows("\x1b[7mBackSonar"));
    process.signal(signal);
    ASSERT_NO_FATAL_FAILURE(expectEnd(128 + signal));
    const Result compared = run({"replay", path, "--compare"});
    EXPECT_EQ(compared.status, 0) << compared.out << compared.error;
  }
}

TEST_F(WatchTest, ctrlZRestoresTheTerminalAndFgContinues) {
  start();
  ASSERT_TRUE(terminal.shows("\x1b[7mBackSonar"));
  terminal.type("\x1a");
  ASSERT_TRUE(terminal.shows("\x1b[?25h\x1b[?1049l"));
  process.awaitStop();
  EXPECT_TRUE(terminal.isAsBefore());
  process.signal(SIGCONT);
  ASSERT_TRUE(terminal.shows("\x1b[?1049h\x1b[?25l"));
  ASSERT_TRUE(terminal.shows("\x1b[7mBackSonar"));
  terminal.type("q");
  expectEnd(0);
}

TEST(Terminal, anExceptionLeavesItAsItWas) {
  PseudoTerminal outside;
  try {
    const Terminal sut(outside.inner, outside.inner);
    EXPECT_FALSE(outside.isAsBefore());
    throw std::runtime_error("trouble");
  } catch (const std::runtime_error&) {
    EXPECT_TRUE(outside.isAsBefore());
  }
  EXPECT_TRUE(outside.shows("\x1b[?25h\x1b[?1049l"));
}

TEST(Watch, printsOneTableWithoutATerminal) {
  const Result result =
      run({"watch", "--once", "--robot", session::findSharedFile("descriptions/porter.urdf"),
           "--subscribe", "Sonar", "--fault", "BackSonar:off"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.error,
            "qvsensors: the robot starts at x,y,theta 8.825,5.925,0 (m, rad), a free place; choose "
            "another with --pose\nqvsensors: BackSonar gave no record: no measurement yet\n");
  EXPECT_THAT(result.out, HasSubstr("FrontSonar        Sonar      yes      good       yes"
                                    "                1      15 "));
  EXPECT_THAT(result.out, HasSubstr("FrontLaser        Laser      yes      good       no "
                                    "                0       0          -      -  off\n"));
}

}  // namespace
}  // namespace QV::app
