#include <filesystem>

#include "tests/apps/run_program.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/vocabulary.h"

namespace QV::app {
namespace {

struct Completion {
  /** The words of a command line; the last one is begun. */
  std::string words;
  /** The words that it may go on with. */
  std::string expected;
};

TEST(Guides, bashCompletesCommandsOptionsAndValues) {
  const test::TemporaryFolder folder;
  folder.write("mine.yaml", "");
  const Completion cases[] = {
      {"qvsensors re", "read replay recover"},
      {"qvsensors map i", "info"},
      {"qvsensors map info --f", "--format"},
      {"qvsensors read --fo", "--format"},
      {"qvsensors read --format js", "json jsonl"},
      {"qvsensors check --format js", "json jsonl"},
      {"qvsensors read --noise 0.1 --robot p", "porter"},
      {"qvsensors read --map m", "mine.yaml"},
      {"qvsensors read --seed m", ""},
      {"qvsensors info m", "mine.yaml"},
      {"qvsensors info r", "run.mcap"},
      {"qvsensors replay l", "lidar.log"},
      {"qvsensors serve --replay c", "cut.mcap"},
      {"qvsensors help re", "read replay recover"},
      {"qvsensors manual map ''", "info"},
      {"qvsensors watch --log-level v", "verbose"},
      {"qvsensors completion f", "fish"},
      {"qvsensors serve --ros2-navigation o", "own others"},
  };
  for (const auto& [words, expected] : cases) {
    const std::string reply =
        shellOutput("cd " + folder.string() + "; source <(" QVSENSORS " completion bash)\n" +
                    "COMP_WORDS=(" + words + "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n" +
                    "_qvsensors 2>/dev/null; echo ${COMPREPLY[*]}");
    EXPECT_EQ(reply, expected + "\n") << words;
  }
}

TEST(Guides, fishCompletesCommandsAndRecordings) {
  if (shellOutput("command -v fish").empty()) GTEST_SKIP() << "no fish";
  const Completion cases[] = {
      {"qvsensors help re", "read\nrecover\nreplay\n"},
      {"qvsensors manual map ", "info\n"},
      {"qvsensors replay li", "lidar.log\n"},
      {"qvsensors serve --replay cut.", "cut.mcap\n"},
  };
  const test::TemporaryFolder folder;
  for (const auto& [words, expected] : cases) {
    const std::string reply =
        shellOutput("cd " + folder.string() +
                    "; fish -c 'source (" QVSENSORS " completion fish | psub); complete -C \"" +
                    words + "\"' | cut -f1");
    EXPECT_EQ(reply, expected) << words;
  }
}

TEST(Guides, zshAndFishAcceptTheirScripts) {
  for (const std::string shell : {"zsh", "fish"}) {
    const std::string script = run({"completion", shell}).out;
    for (const char* word : {"jsonl", "porter", "recover", "log-level", "info"})
      EXPECT_THAT(script, HasSubstr(word)) << shell;
    EXPECT_EQ(shellOutput("command -v " + shell + " >/dev/null || exit; " QVSENSORS " completion " +
                          shell + " | " + shell + " -n /dev/stdin 2>&1"),
              "");
  }
}

TEST(Guides, eachManualPageListsTheOptionsAndHasNoStrayRoffRequest) {
  const test::TemporaryFolder folder;
  EXPECT_EQ(run({"manual", "--output", folder.string()}).status, 0);
  const std::string page = test::readBytes(folder / "qvsensors-map-info.1");
  EXPECT_EQ(page, run({"manual", "map", "info"}).out);
  EXPECT_THAT(page, HasSubstr(".TP\n\\fB\\-\\-format\\fR \\fItable|json|jsonl\\fR\n"));
  EXPECT_TRUE(std::filesystem::exists(folder / "qvsensors.1"));
  EXPECT_THAT(run({"manual"}).out, HasSubstr(".BR qvsensors\\-stream (1)"));
  EXPECT_THAT(run({"manual", "info"}).out, HasSubstr(".TP\n\\fIRECORDING\\fR\n\\&.mcap, .db3"));
  EXPECT_THAT(run({"manual", "--output", folder / "none"}).error,
              HasSubstr("none/qvsensors.1: can't be written: No such file or directory"));
}

}  // namespace
}  // namespace QV::app
