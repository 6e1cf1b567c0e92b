#pragma once

#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "apps/program.h"

namespace QV::app {

struct Result {
  int status;
  std::string out;
  std::string error;
};

/** Runs qvsensors in this process. */
inline Result run(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "qvsensors");
  std::vector<const char*> argv;
  for (const auto& argument : arguments) argv.push_back(argument.c_str());
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const int status = runProgram(static_cast<int>(argv.size()), argv.data());
  return {status, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

/** An object of JSON from each line. */
inline std::vector<nlohmann::json> recordsIn(const std::string& lines) {
  std::istringstream stream(lines);
  std::vector<nlohmann::json> records;
  for (std::string line; std::getline(stream, line);)
    records.push_back(nlohmann::json::parse(line));
  return records;
}

}  // namespace QV::app
