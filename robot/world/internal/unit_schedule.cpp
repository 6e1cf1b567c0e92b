#include "robot/world/internal/unit_schedule.h"

#include <exception>
#include <utility>

#include "platform/ko/log.h"

namespace QV::robot {

UnitSchedule::UnitSchedule(UnitFactory::Units units) {
  for (auto& unit : units) {
    const Beat beat(unit->getPeriod());
    entries.push_back({std::move(unit), beat});
  }
}

void UnitSchedule::measure(ko::Clock::time_point now) {
  for (Entry& entry : entries) {
    if (entry.beat.isDue(now)) xMeasure(entry, now);
  }
}

void UnitSchedule::xMeasure(Entry& entry, ko::Clock::time_point now) {
  std::string failure;
  try {
    entry.unit->measure(now);
  } catch (const std::exception& error) {
    failure = error.what();
  } catch (...) {
    failure = "unknown failure";
  }
  if (failure != entry.failure && !failure.empty()) {
    ko::log::error("VirtualRobot", "measure") << entry.unit->getName() << ": " << failure;
  }
  entry.failure = failure;
}

}  // namespace QV::robot
