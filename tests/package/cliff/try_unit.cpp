#include <cmath>
#include <iostream>

#include <boost/make_shared.hpp>

#include "cliff_kind.h"
#include "cliff_unit.h"
#include "platform/ko/simulated_time.h"
#include "robot/world/units/unit_rig.h"

using namespace QV;

/** The unit alone, 0.1 m above the floor: no sensor reads it, and nothing moves. */
int main(int argc, char* argv[]) {
  if (argc != 2) return 2;
  Model::SensorKinds kinds;
  kinds.add(cliffKind());
  robot::WorldOptions world;
  // The hole's centre (m, rad), length, width and depth (m).
  world.holes = {{{6.0f, 5.0f, 0.0f}, 1.0f, 1.0f, 0.5f}};
  const ko::SimulatedTime time;
  robot::UnitRig rig(robot::RobotDescription::fromFile(argv[1], kinds),
                     boost::make_shared<OccupancyMap>(100, 100, 0.1f, Math::Pose2D(), 0.0f), world);
  CliffUnit sut(rig.getConfig("FrontCliff"), rig.getContext());

  int failures = 0;
  const auto expect = [&](const char* where, float x, float range) {
    rig.getContext().getSurroundings().setMoment({{x, 5.0f, 0.0f}});
    sut.measure(ko::Clock::now());
    const float measured = rig.getContext().read("Device/Cliff/Front/Range").toFloat();
    if (std::abs(measured - range) < 1e-3f) return;
    ++failures;
    std::cout << where << ": " << range << " m expected, " << measured << " m measured\n";
  };
  expect("on the floor", 3.0f, 0.1f);
  expect("at the hole", 5.75f, 0.6f);
  rig.setFault({"FrontCliff", robot::FaultKind::garbage});
  expect("at the hole, with garbage", 5.75f, -1.0f);
  return failures;
}
