#include "outlets/picture/internal/palette.h"

#include "outlets/internal/family_colour.h"

namespace QV::outlets {

cv::Scalar paintOf(const std::string& family) {
  const Colour colour = colourOfFamily(family);
  return {double(colour.blue), double(colour.green), double(colour.red)};
}

}  // namespace QV::outlets
