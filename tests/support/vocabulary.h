#pragma once

#include <exception>
#include <string>

#include <boost/chrono/duration.hpp>
#include <gmock/gmock.h>

/** The names that most tests are written in. */
namespace QV {

using boost::chrono::milliseconds;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::FloatNear;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;
using testing::ThrowsMessage;

/** The text of the standard exception that `run` throws, or nothing. */
template <typename F>
std::string errorOf(F run) {
  try {
    run();
  } catch (const std::exception& error) {
    return error.what();
  }
  return std::string();
}

}  // namespace QV
