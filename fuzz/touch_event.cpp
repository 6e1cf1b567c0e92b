/** Any value as a touch event: it is read whole or not at all, each group as it stands there. */
#include "sensor/perception/internal/touch_event.h"

#include <optional>

#include "fuzz/value_decoder.h"

namespace QV::fuzz {
namespace {

using Groups = std::vector<Touch::TouchGroupEvent>;

std::optional<Groups> extract(const QVValue& event) {
  Groups groups = {{"from before", true, {Touch::WHEEL}}};
  if (Touch::extractTouchEventInfo(event, groups)) return groups;
  check(groups.empty(), "a refused event leaves groups");
  return std::nullopt;
}

void checkGroup(const Touch::TouchGroupEvent& group, const QVValue& entry) {
  check(entry[0].isString() && group.groupName == entry[0].toString(), "another name");
  check(entry[1].isBool() && group.touched == entry[1].toBool(), "touched or not");
  if (!group.touched) return check(group.types.empty(), "a release has types");
  check(group.types.size() <= entry[2].getSize(), "a type from nowhere");
  for (const QVValue& type : entry[2].toArray()) {
    const auto number = static_cast<Touch::TOUCH_DETECTION_TYPE>(type.toInt32());
    check(type.isInt() && group.types.count(number) == 1, "a type is lost");
    check(Touch::isValidTouchDetectionType(number) || Touch::getTypeName(number) == "Unknown",
          "a name for a type that is none");
  }
}

void checkEvent(const QVValue& event) {
  const std::optional<Groups> groups = extract(event);
  if (!event.isArray()) return check(!groups, "an event that is no array");
  std::optional<Groups> expected = Groups();
  for (const QVValue& entry : event.toArray()) {
    const auto alone = extract(QVValue::array(entry));
    if (!alone) {
      expected.reset();
      break;
    }
    check(alone->size() == 1, "one group gives another number of them");
    checkGroup(alone->front(), entry);
    expected->push_back(alone->front());
  }
  check(groups == expected, "an event is not its groups one by one");
}

}  // namespace
}  // namespace QV::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  QV::fuzz::checkEvent(QV::fuzz::ValueDecoder(data, size).next());
  return 0;
}
