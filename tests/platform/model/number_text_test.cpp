#include "platform/model/internal/number_text.h"

#include <clocale>
#include <cmath>
#include <limits>
#include <locale>

#include <gtest/gtest.h>

#include "platform/model/model_utils.h"

namespace QV::Model {
namespace {

TEST(AtofC, readsTheLongestPrefixThatIsANumber) {
  const std::pair<const char*, double> cases[] = {
      {"", 0.0},          {"junk", 0.0}, {" \t\n2.5 m", 2.5}, {"+3", 3.0},
      {"-0.25e1x", -2.5}, {"1,5", 1.0},  {".5", 0.5},         {"7.", 7.0},
      {"0x10", 16.0},     {"1e", 1.0},   {"--1", 0.0},        {"infinite", INFINITY},
      {"1e999", HUGE_VAL}};
  for (const auto& [text, expected] : cases) EXPECT_EQ(atofC(text), expected) << text;
  EXPECT_TRUE(std::isnan(atofC("nan")));
}

TEST(ToNumber, takesAWholeFiniteNumberOnly) {
  EXPECT_EQ(toNumber("-1.5e-3"), -1.5e-3);
  EXPECT_EQ(toNumber("+10."), 10.0);
  for (const char* text :
       {"", " 1", "1 ", "1,5", "1.5m", "nan", "inf", "1e999", "+-1", "++1", "0x10"}) {
    EXPECT_EQ(toNumber(text), std::nullopt) << text;
  }
  EXPECT_EQ(toInteger("-2147483648"), std::numeric_limits<int>::min());
  for (const char* text : {"", "2147483648", "1.0", "9x"}) {
    EXPECT_EQ(toInteger(text), std::nullopt) << text;
  }
}

struct CommaPoint : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
};

TEST(Numbers, readTheSameInALocaleWithACommaForAPoint) {
  // Streams follow the one, the C library the other, where such a locale is installed.
  std::locale::global(std::locale(std::locale::classic(), new CommaPoint));
  for (const char* locale : {"de_DE.UTF-8", "fr_FR.UTF-8", "de_DE"}) {
    if (std::setlocale(LC_NUMERIC, locale)) break;
  }
  const Robot robot = ModelUtils::robotFromXml(
      R"(<robot name="r"><link name="a"><collision><origin xyz="0.5 1.5 -2.25"/>
           <geometry><sphere radius="1.5"/></geometry></collision></link></robot>)");
  const CollisionShape& shape = *robot.collisionShapes.at("a#0");
  EXPECT_EQ(shape.getShape(), Math::Shape3D(Math::Sphere{1.5f}));
  EXPECT_EQ(position3DFromTransform(shape.getTransform()), Math::Position3D(0.5f, 1.5f, -2.25f));
  EXPECT_EQ(atofC("1.5"), 1.5);
}

}  // namespace
}  // namespace QV::Model
