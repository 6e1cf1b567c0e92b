#pragma once

#include <memory>

#include "session/snapshot.h"

namespace QV::python {

using SharedSnapshot = std::shared_ptr<const session::Snapshot>;

/** Snapshots as Python sees them: they never change. */
struct SnapshotView {
  SharedSnapshot snapshot;
};

}  // namespace QV::python
