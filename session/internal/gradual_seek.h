#pragma once

#include "platform/api.h"
#include "platform/ko/clock.h"

namespace QV::session {

class Session;

/**
 * Goes to a time of a recording in parts, so that a viewer can show the progress and choose another
 * time. Use it on the session's thread. The session must outlive it.
 */
class QV_API GradualSeek {
 public:
  /** `place` counts from the recording's start; one after its end is its end. A place behind begins
   * the recording again. Throws UsageError for a session that is no recording. */
  GradualSeek(Session& session, ko::Duration place);

  /** Plays the next second, or up to the place; true at the place. */
  bool goOn();

 private:
  ko::Duration xGetTime() const;

  Session& session;
  const ko::Duration place;
};

}  // namespace QV::session
