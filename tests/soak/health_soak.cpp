/**
 * Drives porter about the apartment among people, its sensors noisy and sound, for HOURS of
 * simulated time with each seed, and says what was told of their health: nothing should be. A robot
 * that hardly drives is an error, too.
 *
 *     health_soak HOURS SEED...
 */
#include <cstdlib>
#include <iostream>

#include "tests/support/watched_drive.h"

namespace {

// Of a drive of hours, m/s; seconds.
constexpr double kLeastSpeed = 0.1;
constexpr int kRest = 60;

}  // namespace

int main(int count, char** arguments) {
  using namespace QV;
  const double hours = count > 1 ? std::atof(arguments[1]) : 0.0;
  if (count < 3 || !(hours > 0.0)) {
    std::cerr << "usage: health_soak HOURS SEED...\n";
    return 2;
  }
  bool isQuiet = true;
  for (int i = 2; i < count; ++i) {
    test::WatchedDrive drive;
    drive.options.world.seed = static_cast<std::uint64_t>(std::atoll(arguments[i]));
    drive.options.world.rangeNoise = 0.01f;
    drive.options.world.dropOuts = 0.01f;
    drive.options.world.randomPeople = 3;
    drive.run(boost::chrono::seconds(static_cast<int>(3600 * hours)));
    std::cout << "seed " << arguments[i] << ": " << hours << " h, " << drive.metres
              << " m, at rest for " << drive.secondsAtRest << " s at most, " << drive.alarms.size()
              << " alarms" << std::endl;
    for (const std::string& alarm : drive.alarms) std::cout << "  " << alarm << std::endl;
    const bool drives = drive.metres > kLeastSpeed * 3600 * hours && drive.secondsAtRest < kRest;
    isQuiet = isQuiet && drive.alarms.empty() && drives;
  }
  return isQuiet ? 0 : 1;
}
