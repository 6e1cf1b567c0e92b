#include "outlets/internal/family_colour.h"

#include <array>
#include <map>

#include "outlets/internal/hues.h"

namespace QV::outlets {
namespace {

// Bumpers are simulated, touches are not: no robot has both.
const std::map<std::string, Colour>& knownFamilies() {
  static const std::map<std::string, Colour> all{
      {"Laser", hues::kBlue},       {"Sonar", hues::kVermilion},  {"Asus", hues::kGreen},
      {"Bumper", hues::kPurple},    {"Touch", hues::kPurple},     {"Shovel", hues::kSky},
      {"HoleLaser", hues::kOrange}, {"BlindZone", {214, 190, 66}}};
  return all;
}

// Darker than those of the known families.
constexpr std::array<Colour, 6> kSpare{
    {{51, 34, 136}, {136, 34, 85}, {153, 153, 51}, {170, 68, 153}, {102, 17, 0}, {68, 119, 170}}};

// FNV-1a: the same on every machine.
std::uint32_t hashOf(const std::string& text) {
  std::uint32_t hash = 2166136261u;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619u;
  return hash;
}

}  // namespace

Colour colourOfFamily(const std::string& family) {
  const auto known = knownFamilies().find(family);
  return known != knownFamilies().end() ? known->second : kSpare[hashOf(family) % kSpare.size()];
}

std::string toText(const Colour& colour) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text = "#";
  for (const std::uint8_t part : {colour.red, colour.green, colour.blue}) {
    text += {kDigits[part / 16], kDigits[part % 16]};
  }
  return text;
}

}  // namespace QV::outlets
