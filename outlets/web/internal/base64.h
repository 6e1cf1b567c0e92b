#pragma once

#include <string>
#include <string_view>

namespace QV::outlets {

/** Bytes as text of the standard's alphabet, padded. */
std::string toBase64(std::string_view bytes);

}  // namespace QV::outlets
