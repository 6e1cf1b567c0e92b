#pragma once

#include <boost/chrono.hpp>
#include <gmock/gmock.h>

/** What most tests are written in. */
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

}  // namespace QV
