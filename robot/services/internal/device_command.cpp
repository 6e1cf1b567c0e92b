#include "robot/services/internal/device_command.h"

#include <map>

#include "platform/middleware/contracts/device_manager_contract.h"
#include "platform/middleware/qv_error.h"

namespace QV::robot {
namespace {

[[noreturn]] void refuse(const std::string& expected, const QVValue& given) {
  using namespace DeviceManagerContract;
  throw QVError(kModule, kSet, expected + " expected, " + given.toText() + " given");
}

DeviceCommand::Mode toMode(const std::string& key, const QVValue& mode) {
  using namespace DeviceManagerContract;
  static const std::map<std::string, DeviceCommand::Mode> modes{
      {kMerge, DeviceCommand::Mode::merge},
      {kClearAll, DeviceCommand::Mode::clearAll},
      {kClearAfter, DeviceCommand::Mode::clearAfter},
      {kClearBefore, DeviceCommand::Mode::clearBefore}};
  const auto found = modes.find(mode.toString());
  if (found != modes.end()) return found->second;
  refuse("key \"" + key + "\": Merge, ClearAll, ClearAfter or ClearBefore", mode);
}

bool isNumber(const QVValue& value) {
  return value.isInt() || value.isFloat() || value.isBool();
}

// Times are ints only: as a float they would be seconds off after a few days.
bool isTimedValue(const QVValue& pair) {
  return pair.isArray() && pair.getSize() == 2 && isNumber(pair[0]) && pair[1].isInt() &&
         pair[1].toInt() == pair[1].toInt32();
}

}  // namespace

DeviceCommand parseDeviceCommand(const QVValue& command, ko::Clock::time_point now) {
  if (!command.isArray() || command.getSize() != 3 || !command[0].isString() ||
      !command[1].isString() || !command[2].isArray()) {
    refuse("[key, mode, [[value, time], ...]]", command);
  }
  DeviceCommand result{command[0].toString(), toMode(command[0].toString(), command[1]), {}};
  for (const QVValue& pair : command[2].toArray()) {
    if (!isTimedValue(pair)) {
      refuse("key \"" + result.key + "\": [number, 32-bit time in milliseconds]", pair);
    }
    result.values.push_back({pair[0], ko::Clock::fromInt32ms(pair[1].toInt32(), now, 0)});
  }
  return result;
}

}  // namespace QV::robot
