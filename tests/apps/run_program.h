#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "apps/program.h"

namespace QV::app {

struct Result {
  int status;
  std::string out;
  std::string error;
};

/** Runs qvsensors in this process, by the name `program`. */
inline Result run(std::vector<std::string> arguments, const std::string& program = "qvsensors",
                  const session::OpenOptions& robots = {}) {
  arguments.insert(arguments.begin(), program);
  std::vector<const char*> argv;
  for (const auto& argument : arguments) argv.push_back(argument.c_str());
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const int status = runProgram(static_cast<int>(argv.size()), argv.data(), robots);
  return {status, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

/** Returns what a command of bash writes on standard output. */
inline std::string shellOutput(const std::string& command) {
  const std::string file = testing::TempDir() + "/shell" + std::to_string(getpid());
  const std::string words = "bash >" + file + " <<'END'\n" + command + "\nEND\n";
  EXPECT_NE(std::system(words.c_str()), -1);
  std::ifstream stream(file);
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  std::remove(file.c_str());
  return text;
}

/** An object of JSON from each line. */
inline std::vector<nlohmann::json> recordsIn(const std::string& lines) {
  std::istringstream stream(lines);
  std::vector<nlohmann::json> records;
  for (std::string line; std::getline(stream, line);)
    records.push_back(nlohmann::json::parse(line));
  return records;
}

struct BadInput {
  std::vector<std::string> arguments;
  std::string expected;
};

/** Expects a refusal by one line that says what was expected. */
inline void expectRefused(const BadInput& input) {
  const Result result = run(input.arguments);
  EXPECT_EQ(result.status, 2) << testing::PrintToString(input.arguments);
  EXPECT_THAT(result.error, testing::HasSubstr(input.expected));
  EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), 1) << result.error;
}

}  // namespace QV::app
