#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace QV::test {

/** The digests of the messages of a topic that this process has handed to the engine. */
struct Written {
  std::set<std::uint64_t> all;
  std::uint64_t last = 0;
};

/** By the topics' DDS names. */
std::map<std::string, Written> getWritten();

}  // namespace QV::test
