#include "sensor/perception/internal/touch_event.h"

#include <optional>

#include <gmock/gmock.h>

namespace QV::Touch {
namespace {

using Groups = std::vector<TouchGroupEvent>;

std::set<TOUCH_DETECTION_TYPE> types(std::initializer_list<int> numbers) {
  std::set<TOUCH_DETECTION_TYPE> result;
  for (const int number : numbers) result.insert(static_cast<TOUCH_DETECTION_TYPE>(number));
  return result;
}

template <typename... Elements>
QVValue entry(const Elements&... elements) {
  return QVValue::array(elements...);
}

TEST(TouchEvent, aMalformedTouchEventIsRefusedAsAWhole) {
  const QVValue none = QVValue::Array();
  const QVValue good = entry("Head", true, QVValue::array(1));
  const QVValue released = entry("Back", false);
  const std::optional<Groups> refused;
  const std::pair<QVValue, std::optional<Groups>> cases[] = {
      {none, Groups{}},
      {QVValue::array(good, released), Groups{{"Head", true, {TACTILE}}, {"Back", false, {}}}},
      {QVValue::array(entry("", true, none)), Groups{{"", true, {}}}},
      {QVValue::array(entry("A", true, QVValue::array(1, 1, 9))),
       Groups{{"A", true, types({1, 9})}}},
      {QVValue::array(entry("A", true, QVValue::array(-7, 5000000000))),
       Groups{{"A", true, types({-7, 2147483647})}}},
      // A release's types are not read, nor is what comes after the third element.
      {QVValue::array(entry("A", false, "x"), QVValue::array("B", true, none, "x", 3)),
       Groups{{"A", false, {}}, {"B", true, {}}}},
      {7, refused},
      {"Head", refused},
      {QVValue(), refused},
      {QVValue::array(7), refused},
      {QVValue::array(QVValue::array("A")), refused},
      {QVValue::array(entry(1, false)), refused},
      {QVValue::array(entry("A", 0)), refused},
      {QVValue::array(good, entry("A", true)), refused},
      {QVValue::array(good, entry("A", true, 1)), refused},
      {QVValue::array(released, entry("A", true, QVValue::array("1"))), refused},
      {QVValue::array(entry("A", true, QVValue::array(1, 2.0f))), refused},
      {QVValue::array(entry("A", true, QVValue::array(1, true)), good), refused},
  };
  for (const auto& [event, expected] : cases) {
    Groups groups{{"from before", true, {}}};
    EXPECT_EQ(extractTouchEventInfo(event, groups), expected.has_value()) << event;
    EXPECT_EQ(groups, expected.value_or(Groups{})) << event;
  }
}

TEST(TouchEvent, everyTypeHasAName) {
  const std::pair<int, const char*> names[] = {{-1, "Unknown"}, {0, "Unknown"},  {1, "Tactile"},
                                               {2, "Bumper"},   {3, "Joint"},    {4, "Actuator"},
                                               {5, "Wheel"},    {6, "Effector"}, {7, "Unknown"}};
  for (const auto& [type, name] : names) {
    EXPECT_EQ(getTypeName(static_cast<TOUCH_DETECTION_TYPE>(type)), name);
    EXPECT_EQ(isValidTouchDetectionType(type), type >= 0 && type < 7) << type;
  }
}

}  // namespace
}  // namespace QV::Touch
