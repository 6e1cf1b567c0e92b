#include <string>
#include <utility>
#include <vector>

#include "platform/model/model_utils.h"
#include "tests/support/vocabulary.h"

namespace QV::Model {
namespace {

/** The keys of a sensor with `content` on line 2. */
std::vector<std::string> keysOf(const std::string& content) {
  return ModelUtils::robotFromXml("<robot name='r'><link name='a'/><sensor name='s' type='8'>\n" +
                                  content + "</sensor></robot>")
      .sensorConfigs.at("s")
      .memoryKeys;
}

std::string pattern(const std::string& text, const std::string& count) {
  return "<memory_keys pattern='" + text + "' count='" + count + "'/>";
}

TEST(KeyPattern, givesTheKeysOfEachNumberInTurn) {
  EXPECT_THAT(keysOf(pattern("Lds/{i}/{X,Y}", "2") + "<memory_key>Last</memory_key>"),
              ElementsAre("Lds/0/X", "Lds/0/Y", "Lds/1/X", "Lds/1/Y", "Last"));
  EXPECT_THAT(keysOf(pattern("{L,R}{X,Y}{i:02}", "1")), ElementsAre("LX00", "LY00", "RX00", "RY00"))
      << "the last alternatives change fastest";
  EXPECT_THAT(keysOf("<memory_keys pattern='{A,B,C}'/>"), ElementsAre("A", "B", "C"));
  const auto many = keysOf(pattern("{i:02}/{i}", "101"));
  EXPECT_EQ(many[9], "09/9");
  EXPECT_EQ(many[100], "100/100");
}

TEST(KeyPattern, refusesAMalformedPatternAndNamesThePlace) {
  const std::string twice17 =
      "{0,1}{0,1}{0,1}{0,1}{0,1}{0,1}{0,1}{0,1}{0,1}{0,1}{0,1}{0,1}{0,1}"
      "{0,1}{0,1}{0,1}{0,1}";
  const std::pair<std::string, std::string> cases[] = {
      {pattern("a{i", "2"), "attribute pattern: braces in pairs, none within another, expected"},
      {pattern("a}{i}", "2"), "braces in pairs"},
      {pattern("{i{X,Y}}", "2"), "braces in pairs"},
      {pattern("{j}", "2"), "{i}, {i:02} or {X,Y} expected, \"{j}\" given"},
      {pattern("{i}{X,}", "2"), "expected, \"{X,}\" given"},
      {pattern("{i:2}", "2"), "expected, \"{i:2}\" given"},
      {pattern("", "2"), "attribute pattern: a text expected"},
      {pattern("{i}", "0"), "attribute count: a number above 0 expected, \"0\" given"},
      {pattern("{i}", "two"), "attribute count: an integer expected, \"two\" given"},
      {pattern("A", "2"), "{i} in the pattern expected"},
      {"<memory_keys pattern='{i}'/>", "an attribute count expected"},
      {"<memory_keys count='2'/>", "an attribute pattern expected"},
      {pattern(std::string(257, 'x'), "1"), "at most 256 characters expected, 257 given"},
      {pattern("{i}", "100001"), "at most 100000 keys more expected"},
      {pattern("{i}", "60000") + pattern("{i}", "40001"), "at most 40000 keys more expected"},
      {"<memory_keys pattern='" + twice17 + "'/>", "at most 100000 keys more expected"},
  };
  for (const auto& c : cases) {
    EXPECT_THAT(errorOf([&] { keysOf(c.first); }),
                AllOf(HasSubstr("line 2, <memory_keys>: "), HasSubstr(c.second)))
        << c.first;
  }
}

}  // namespace
}  // namespace QV::Model
