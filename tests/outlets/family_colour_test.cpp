#include "outlets/internal/family_colour.h"

#include <gtest/gtest.h>

namespace QV::outlets {
namespace {

TEST(FamilyColour, anUnknownFamilyHasAConstantColourOfItsOwn) {
  EXPECT_EQ(toText(colourOfFamily("Laser")), "#0072b2");
  // Pages and pictures of other days and machines have the same.
  EXPECT_EQ(toText(colourOfFamily("Cliff")), "#4477aa");
  EXPECT_EQ(toText(colourOfFamily("Radar")), "#aa4499");
}

}  // namespace
}  // namespace QV::outlets
