#include "apps/program.h"

int main(int argc, char** argv) {
  return QV::app::runProgram(argc, argv);
}
