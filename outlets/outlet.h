#pragma once

#include <memory>
#include <vector>

#include "platform/api.h"
#include "platform/ko/log.h"
#include "session/session.h"
#include "session/snapshot.h"

namespace QV::outlets {

/**
 * A place where a session goes: a page, a viewer, a file, a picture.
 *
 * Derive from it and write show(). Call it on the session's thread, with one snapshot after
 * another, and finish() at the end.
 *
 * - Lifetime: not copyable. Files are whole after finish() only.
 * - Threads: every operation is called by the session's thread, one at a time.
 * - Errors: what can't be written is a std::runtime_error that names the file.
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

  /** The sensors that are wanted now, each on behalf of a subscriber of its own name. */
  virtual session::Demand getDemand() const { return {}; }
  /** True if a snapshot would be looked at: without that, nobody need take one. */
  virtual bool isWatched() const { return true; }

  /** Shows a snapshot. What can't be written is a std::runtime_error that names the file. */
  virtual void show(const session::Snapshot& snapshot) = 0;
  /** Shows the log's new lines, in order. */
  virtual void showLog(const std::vector<ko::log::Record>&) {}
  /** Ends: nothing comes any more, and files are whole after this. Throws as show() does. */
  virtual void finish() {}
};

/** Several outlets as one. */
class QV_API OutletList : public Outlet {
 public:
  void add(std::shared_ptr<Outlet> outlet);

  session::Demand getDemand() const override;
  bool isWatched() const override;
  /** Shows it to those that are watched. */
  void show(const session::Snapshot& snapshot) override;
  void showLog(const std::vector<ko::log::Record>& lines) override;
  void finish() override;

 private:
  std::vector<std::shared_ptr<Outlet>> outlets;
};

}  // namespace QV::outlets
