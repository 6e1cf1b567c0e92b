#pragma once

#include <boost/chrono/duration.hpp>

#include "platform/ko/clock.h"

namespace QV::app {

inline double inSeconds(ko::Duration duration) {
  return boost::chrono::duration<double>(duration).count();
}

}  // namespace QV::app
