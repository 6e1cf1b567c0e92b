#pragma once

#include <string>
#include <vector>

#include <boost/chrono/duration.hpp>
#include <gmock/gmock.h>

#include "platform/ko/simulated_time.h"

namespace ko::test {

/** A simulated time from 0 on, and a record of what happened when, as "what ms". */
struct Timeline {
  void note(const std::string& what) {
    const auto now = Clock::now().time_since_epoch();
    lines.push_back(
        what + " " +
        std::to_string(boost::chrono::duration_cast<boost::chrono::milliseconds>(now).count()));
  }

  boost::function<void()> noting(const std::string& what) {
    return [this, what] { note(what); };
  }

  void advanceMs(int ms) { time.advance(boost::chrono::milliseconds(ms)); }

  SimulatedTime time;
  std::vector<std::string> lines;
};

}  // namespace ko::test

namespace ko {
using boost::chrono::hours;
using boost::chrono::milliseconds;
using test::Timeline;
using testing::ElementsAre;
using testing::ThrowsMessage;
}  // namespace ko
