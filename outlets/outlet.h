#pragma once

#include <memory>
#include <vector>

#include "platform/api.h"
#include "platform/ko/log.h"
#include "session/session.h"
#include "session/snapshot.h"

namespace QV::outlets {

/**
 * A consumer of a session's snapshots: a page, a viewer, a file, a picture. Derive from it and
 * write show(). Call it with one snapshot after another, and finish() at the end.
 * - Lifetime: not copyable. A file is complete only after finish().
 * - Threads: every operation is called by the session's thread, one at a time.
 * - Errors: std::runtime_error with the file's name if writing fails.
 *
 *     class Printer : public QV::outlets::Outlet {
 *      public:
 *       void show(const QV::session::Snapshot& snapshot) override {
 *         std::cout << snapshot.pose.x << ", " << snapshot.pose.y << '\n';
 *       }
 *     };
 */
class QV_API Outlet {
 public:
  Outlet() = default;
  virtual ~Outlet() = default;
  Outlet(const Outlet&) = delete;
  Outlet& operator=(const Outlet&) = delete;

  /** Tells which sensors it wants now, and under which subscribers' names. */
  virtual session::Demand getDemand() const { return {}; }
  /** True if somebody looks. If false, the caller may skip the snapshot. */
  virtual bool isWatched() const { return true; }

  /** Shows a snapshot. */
  virtual void show(const session::Snapshot& snapshot) = 0;
  /** Shows the log's new lines, in order. */
  virtual void showLog(const std::vector<ko::log::Record>&) {}
  /** Completes the files; no call follows. */
  virtual void finish() {}
};

/** Several outlets as one. */
class QV_API OutletList : public Outlet {
 public:
  void add(std::shared_ptr<Outlet> outlet);

  session::Demand getDemand() const override;
  bool isWatched() const override;
  /** Shows the snapshot to the watched outlets. */
  void show(const session::Snapshot& snapshot) override;
  void showLog(const std::vector<ko::log::Record>& lines) override;
  void finish() override;

 private:
  std::vector<std::shared_ptr<Outlet>> outlets;
};

}  // namespace QV::outlets
