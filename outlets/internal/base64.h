#pragma once

#include <string>
#include <string_view>

#include "platform/api.h"

namespace QV::outlets {

/** Bytes as text of the standard's alphabet, padded. */
QV_API std::string toBase64(std::string_view bytes);

}  // namespace QV::outlets
