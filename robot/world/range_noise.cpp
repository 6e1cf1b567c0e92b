#include "robot/world/range_noise.h"

#include <algorithm>
#include <limits>

namespace QV::robot {

std::mt19937 makeGenerator(std::uint64_t seed, const std::string& source) {
  std::vector<std::uint32_t> words{static_cast<std::uint32_t>(seed),
                                   static_cast<std::uint32_t>(seed >> 32)};
  for (const char c : source) words.push_back(static_cast<unsigned char>(c));
  std::seed_seq sequence(words.begin(), words.end());
  return std::mt19937(sequence);
}

RangeNoise::RangeNoise(const WorldOptions& options, const std::string& sensor)
    : deviation(options.rangeNoise),
      generator(makeGenerator(options.seed, sensor)),
      lost(options.dropOuts) {}

float RangeNoise::apply(float range) {
  if (lost.p() > 0.0 && lost(generator)) return std::numeric_limits<float>::infinity();
  if (deviation == 0.0f) return range;
  return std::max(0.0f, range + deviation * error(generator));
}

}  // namespace QV::robot
