#include "robot/world/chance/internal/generator.h"

#include <vector>

namespace QV::robot {

std::mt19937 makeGenerator(std::uint64_t seed, const std::string& source) {
  std::vector<std::uint32_t> words{static_cast<std::uint32_t>(seed),
                                   static_cast<std::uint32_t>(seed >> 32)};
  for (const char c : source) words.push_back(static_cast<unsigned char>(c));
  std::seed_seq sequence(words.begin(), words.end());
  return std::mt19937(sequence);
}

}  // namespace QV::robot
