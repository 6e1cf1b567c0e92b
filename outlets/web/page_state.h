#pragma once

#include <string>

#include "platform/api.h"
#include "session/snapshot.h"

namespace QV::outlets {

/** What a page is told of a snapshot, as JSON: the message "state" of docs/live-view.md. */
QV_API std::string pageStateOf(const session::Snapshot& snapshot);

}  // namespace QV::outlets
