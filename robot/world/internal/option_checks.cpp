#include "robot/world/internal/option_checks.h"

#include <cmath>
#include <stdexcept>
#include <string>

namespace QV::robot {
namespace {

void expect(bool isSo, const char* expected) {
  if (!isSo) throw std::invalid_argument(std::string("WorldOptions: ") + expected + " expected");
}

bool isShare(float value) {
  return value >= 0.0f && value <= 1.0f;
}

bool isPositive(ko::Duration period) {
  return period > ko::Duration::zero();
}

}  // namespace

void checkOptions(const WorldOptions& options) {
  expect(std::isfinite(options.start.x + options.start.y + options.start.theta), "a finite start");
  expect(options.rangeNoise >= 0.0f && std::isfinite(options.rangeNoise),
         "a range noise from 0 on");
  expect(isShare(options.dropOuts), "a share of drop-outs from 0 to 1");
  expect(isShare(options.odometryDrift), "an odometry drift from 0 to 1");
  expect(options.wallHeight > 0.0f, "a wall height above 0");
  expect(options.randomPeople >= 0, "a number of random people from 0 on");
  expect(isPositive(options.stepPeriod) && isPositive(options.laserPeriod) &&
             isPositive(options.sonarPeriod) && isPositive(options.peoplePeriod),
         "periods above 0");
}

}  // namespace QV::robot
