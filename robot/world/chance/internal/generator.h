#pragma once

#include <cstdint>
#include <random>
#include <string>

namespace QV::robot {

/** The generator of one source of chance; sources of different names differ. */
std::mt19937 makeGenerator(std::uint64_t seed, const std::string& source);

}  // namespace QV::robot
