#pragma once

#include <cstdint>

namespace QV::sensor {

/** The call that a sensor's hardware is busy with. */
enum class HardwareCall : std::uint8_t { none, starting, stopping };

}  // namespace QV::sensor
