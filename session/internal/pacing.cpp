#include "session/internal/pacing.h"

#include <cmath>

namespace QV::session {

ko::Duration Pacing::scale(ko::Duration machine) const {
  if (paused) return ko::Duration::zero();
  return ko::Duration(std::llround(speed * static_cast<double>(machine.count())));
}

}  // namespace QV::session
