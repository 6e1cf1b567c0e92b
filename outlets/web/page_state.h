#pragma once

#include <string>

#include "platform/api.h"
#include "session/snapshot.h"

namespace QV::outlets {

/** Writes a snapshot as JSON for a page: the message "state" of docs/live-view.md. */
QV_API std::string pageStateOf(const session::Snapshot& snapshot);

}  // namespace QV::outlets
