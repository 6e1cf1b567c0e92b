#include "apps/program.h"
#include "cliff_robot.h"

/** qvsensors, for robots with cliff detectors, too. */
int main(int argc, char* argv[]) {
  return QV::app::runProgram(argc, argv, cliffRobot());
}
