#include <csignal>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <utmp.h>

#include <gmock/gmock.h>

#include "apps/interrupt.h"
#include "apps/terminal/terminal.h"
#include "session/shared_files.h"
#include "tests/apps/pseudo_terminal.h"
#include "tests/apps/run_program.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_folder.h"

namespace QV::app {
namespace {

using testing::HasSubstr;

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
  EXPECT_TRUE(terminal.shows("\x1b[7mBlindZone  \u2026\x1b[0m"));
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

TEST(Terminal, aSecondSignalEndsTheProgramAndLeavesItAsItWas) {
  PseudoTerminal outside;
  test::ChildProcess process;
  process.start([&] {
    catchInterrupts();
    const Terminal sut(outside.inner, outside.inner);
    while (true) pause();
  });
  ASSERT_TRUE(outside.shows("\x1b[?1049h\x1b[?25l"));
  while (!process.hasEnded()) process.signal(SIGINT);
  EXPECT_EQ(process.awaitEnd(), -1);
  EXPECT_TRUE(outside.isAsBefore());
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
  EXPECT_EQ(
      result.error,
      "qvsensors: the robot starts at x,y,theta 8.825,5.925,0 (m, m, rad), a free pose; choose "
      "another with --pose\nqvsensors: BackSonar gave no record: no measurement yet\n");
  EXPECT_THAT(result.out, HasSubstr("FrontSonar        Sonar      yes      good       yes"
                                    "                1      15 "));
  EXPECT_THAT(result.out, HasSubstr("FrontLaser        Laser      yes      good       no "
                                    "                0       0          -      -  off\n"));
}

}  // namespace
}  // namespace QV::app
