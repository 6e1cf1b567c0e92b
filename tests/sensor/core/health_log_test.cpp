#include "sensor/core/internal/health_log.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/vocabulary.h"

namespace QV::sensor {
namespace {

using enum HealthState;
using Cause = HealthCause;

struct Change {
  int second;
  const char* sensor;
  HealthState before;
  HealthState state;
  Cause cause;
  /** Empty if the change deserves none. */
  const char* line;
};

const std::vector<Change> kChanges{
    {0, "A", starting, sound, Cause::fresh, ""},
    {1, "A", sound, late, Cause::old, "warning A is late: why"},
    {2, "A", late, silent, Cause::noRecord, "warning A is silent: why"},
    {3, "A", silent, late, Cause::old, ""},
    {4, "A", late, sound, Cause::fresh, "info A is sound again"},
    // It comes and goes.
    {5, "A", sound, late, Cause::old, ""},
    {6, "A", late, sound, Cause::fresh, ""},
    {60, "A", sound, late, Cause::old, ""},
    {62, "A", sound, late, Cause::old, "warning A is late (5 times so far): why"},
    {63, "A", late, off, Cause::unwanted, ""},
    {64, "A", off, sound, Cause::fresh, ""},
    {65, "A", sound, noisy, Cause::garbage, "warning A is noisy: why"},
    {66, "A", noisy, sound, Cause::unwatched, ""},
    // One reading hangs.
    {70, "A", sound, late, Cause::unread, "warning A is late (6 times so far): why"},
    {70, "B", sound, late, Cause::unread, ""},
    {70, "C", starting, silent, Cause::neverRead, ""},
    {71, "D", sound, silent, Cause::readingHangs, "warning D is silent: why"},
    {72, "B", late, sound, Cause::fresh, ""},
    // D contradicts B.
    {80, "B", sound, suspect, Cause::contradicts, "warning B is suspect: why"},
    {80, "D", sound, suspect, Cause::contradicts, ""}};

TEST(HealthLog, namesAFaultOnceAndSaysWhenItIsOver) {
  HealthLog sut;
  std::map<std::pair<std::string, HealthState>, int> times;
  const std::string b = "B";
  const std::string d = "D";
  for (const Change& change : kChanges) {
    SCOPED_TRACE(std::to_string(change.second) + change.sensor);
    const HealthFinding finding{
        .state = change.state, .cause = change.cause, .other = change.sensor == d ? &b : &d};
    const SensorHealth health{change.state,
                              ko::Clock::time_point(boost::chrono::seconds(change.second)), "why",
                              "", ++times[{change.sensor, change.state}]};
    const auto line = sut.lineOn(change.sensor, change.before, finding, health);
    EXPECT_EQ(line ? std::string(getName(line->level)) + " " + line->text : "", change.line);
  }
}

}  // namespace
}  // namespace QV::sensor
