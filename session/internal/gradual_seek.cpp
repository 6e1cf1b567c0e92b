#include "session/internal/gradual_seek.h"

#include <algorithm>

#include "session/internal/session_parts.h"
#include "session/session.h"

namespace QV::session {
namespace {

constexpr ko::Duration kPart{1'000'000'000};

}  // namespace

GradualSeek::GradualSeek(Session& session, ko::Duration place)
    : session(session), place(std::min(place, session.getLength().value_or(place))) {
  session.seek(this->place < xGetTime() ? ko::Duration::zero() : xGetTime());
}

// A part may end later than it was to: then the place is reached, too.
bool GradualSeek::goOn() {
  if (xGetTime() < place) session.seek(std::min(place, xGetTime() + kPart));
  return xGetTime() >= place;
}

ko::Duration GradualSeek::xGetTime() const {
  return ko::Clock::now() - robotOf(session).getStart();
}

}  // namespace QV::session
