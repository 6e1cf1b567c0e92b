#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace QV::test {

/** The folder of recorded data; empty when the environment names none. */
inline std::filesystem::path realData() {
  const char* folder = std::getenv("QV_DATA");
  return folder ? folder : "";
}

/** The content of a file; one that cannot be read is a std::runtime_error. */
inline std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace QV::test

/** Ends the test as skipped when there is no recorded data. */
#define QV_SKIP_WITHOUT_REAL_DATA() \
  if (QV::test::realData().empty()) GTEST_SKIP() << "QV_DATA names no folder of recorded data"
