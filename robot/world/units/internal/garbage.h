#pragma once

#include <cstddef>
#include <random>
#include <string>

#include "robot/world/units/unit_context.h"

namespace QV::robot {

/** The garbage that a broken sensor answers, by chance. For one thread at a time. */
class Garbage {
 public:
  Garbage(const UnitContext& context, const std::string& source)
      : generator(context.makeGenerator(source + " garbage")) {}

  /** Returns a number from 0 to below `count`. */
  std::size_t below(std::size_t count) { return generator() % count; }

  template <typename Choice>
  const auto& pick(const Choice& choice) {
    return choice[below(choice.size())];
  }

 private:
  std::mt19937 generator;
};

}  // namespace QV::robot
