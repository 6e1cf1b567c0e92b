#pragma once

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>
#include <hwy/targets.h>

namespace QV::test {

/**
 * Calls `check` with the name of each set of SIMD instructions that this machine has, in use. The
 * one that QV_VECTOR_TARGET names must be among them.
 */
template <typename Check>
void forEachVectorTarget(const Check& check) {
  const char* const wanted = std::getenv("QV_VECTOR_TARGET");
  bool isThere = wanted == nullptr;
  for (const auto target : hwy::SupportedAndGeneratedTargets()) {
    hwy::GetChosenTarget().Update(target);
    check(hwy::TargetName(target));
    isThere |= wanted != nullptr && std::string(wanted) == hwy::TargetName(target);
  }
  hwy::GetChosenTarget().DeInit();
  EXPECT_TRUE(isThere) << "no " << wanted;
}

}  // namespace QV::test
