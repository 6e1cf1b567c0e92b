#pragma once

#include <hwy/targets.h>

namespace QV::test {

/** Calls `check` with the name of each set of vector instructions that this machine has, in use. */
template <typename Check>
void forEachVectorTarget(const Check& check) {
  for (const auto target : hwy::SupportedAndGeneratedTargets()) {
    hwy::GetChosenTarget().Update(target);
    check(hwy::TargetName(target));
  }
  hwy::GetChosenTarget().DeInit();
}

}  // namespace QV::test
