#include "outlets/picture/internal/palette.h"

#include <map>

namespace QV::outlets {

cv::Scalar colourOfFamily(const std::string& family) {
  static const std::map<std::string, cv::Scalar> colours{
      {"Laser", {178, 114, 0}},     {"Sonar", {0, 94, 213}},      {"Asus", {115, 158, 0}},
      {"Bumper", {167, 121, 204}},  {"Touch", {167, 121, 204}},   {"Shovel", {233, 180, 86}},
      {"HoleLaser", {0, 159, 230}}, {"BlindZone", {66, 190, 214}}};
  const auto found = colours.find(family);
  return found == colours.end() ? cv::Scalar(120, 120, 120) : found->second;
}

}  // namespace QV::outlets
