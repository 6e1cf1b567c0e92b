#include "platform/ko/os.h"

#include "platform/ko/internal/scheduler.h"

namespace ko::os {

void msleep(int milliseconds) {
  if (milliseconds <= 0) return;
  detail::currentScheduler()->sleep(boost::chrono::milliseconds(milliseconds));
}

}  // namespace ko::os
