#include <csignal>
#include <cstdio>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

#include "tests/support/child_process.h"
#include "tests/support/socket_client.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/vocabulary.h"

namespace QV::app {
namespace {

using test::SocketClient;

/** `qvsensors serve` in a process of its own, at any port. */
struct ServeTest : testing::Test {
  void start() {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    process.start([&] {
      dup2(ends[1], STDOUT_FILENO);
      execl(QVSENSORS, QVSENSORS, "serve", "--kind", "1", "--port", "0", nullptr);
    });
    close(ends[1]);
    FILE* out = fdopen(ends[0], "r");
    char line[200] = "";
    ASSERT_NE(fgets(line, sizeof line, out), nullptr);
    fclose(out);
    const std::string text = line;
    EXPECT_THAT(text, StartsWith("Simulated robot of kind 1 at http://127.0.0.1:"));
    port = static_cast<unsigned short>(std::stoi(text.substr(text.rfind(':') + 1)));
  }

  test::ChildProcess process;
  unsigned short port = 0;
};

TEST_F(ServeTest, aPageSeesAndDrivesTheRobotUntilASignalEndsIt) {
  for (const int signal : {SIGINT, SIGTERM}) {
    start();
    SocketClient client(port);
    client.openWebSocket("/live");
    EXPECT_THAT(client.readFrame()->payload, HasSubstr(R"("op":"hello","world":"simulated")"));
    client.sendText(R"({"op":"subscribe","sensor":"Sonar/Front","on":true})");
    client.sendText(R"({"op":"drive","forward":0.5})");
    bool refused = false;
    bool started = false;
    while (!refused || !started) {
      const auto frame = client.readFrame();
      ASSERT_TRUE(frame);
      refused =
          refused ||
          frame->payload == R"({"op":"refused","command":"drive","message":"\"turn\": missing"})";
      started = started || frame->payload.find(R"("subscribers":["page 1"])") != std::string::npos;
    }
    process.signal(signal);
    EXPECT_EQ(process.awaitEnd(), 128 + signal);
  }
}

TEST_F(ServeTest, anIncompleteRecordingExitsWith2) {
  const test::TemporaryFolder folder;
  const std::string path = folder / "run.mcap";
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  process.start([&] {
    const rlimit most{200'000, 200'000};
    setrlimit(RLIMIT_FSIZE, &most);
    std::signal(SIGXFSZ, SIG_IGN);
    dup2(ends[1], STDERR_FILENO);
    execl(QVSENSORS, QVSENSORS, "serve", "--robot", "porter", "--port", "0", "--record",
          path.c_str(), nullptr);
  });
  close(ends[1]);
  FILE* const errors = fdopen(ends[0], "r");
  std::string line(1000, '\0');
  while (line.find("the session continues") == std::string::npos)
    ASSERT_NE(fgets(line.data(), static_cast<int>(line.size()), errors), nullptr);
  process.signal(SIGINT);
  EXPECT_EQ(process.awaitEnd(), 2);
  fclose(errors);
}

}  // namespace
}  // namespace QV::app
