#pragma once

#include <boost/chrono/duration.hpp>

#include "platform/ko/clock.h"

namespace QV::session {

/** A duration as seconds, with their fraction. */
inline double inSeconds(ko::Duration duration) {
  return boost::chrono::duration<double>(duration).count();
}

}  // namespace QV::session
