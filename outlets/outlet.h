#pragma once

#include <memory>
#include <vector>

#include "platform/api.h"
#include "platform/ko/log.h"
#include "session/session.h"
#include "session/snapshot.h"

namespace QV::outlets {

/**
 * Where a session goes: a page, a viewer, a file, a picture. Called on the session's thread, for
 * one snapshot after another.
 */
class QV_API Outlet {
 public:
  Outlet() = default;
  virtual ~Outlet() = default;
  Outlet(const Outlet&) = delete;
  Outlet& operator=(const Outlet&) = delete;

  /** The sensors that are wanted now, each on behalf of a subscriber of its own name. */
  virtual session::Demand getDemand() const { return {}; }
  /** Whether a snapshot would be looked at. */
  virtual bool isWatched() const { return true; }

  /** What can't be written is a std::runtime_error that names the file. */
  virtual void show(const session::Snapshot& snapshot) = 0;
  /** The log's new lines, in order. */
  virtual void showLog(const std::vector<ko::log::Record>&) {}
  /** Nothing comes any more: files are whole after this. Throws as `show` does. */
  virtual void finish() {}
};

/** Several outlets as one. */
class QV_API OutletList : public Outlet {
 public:
  void add(std::shared_ptr<Outlet> outlet);

  session::Demand getDemand() const override;
  bool isWatched() const override;
  /** To those that are watched. */
  void show(const session::Snapshot& snapshot) override;
  void showLog(const std::vector<ko::log::Record>& lines) override;
  void finish() override;

 private:
  std::vector<std::shared_ptr<Outlet>> outlets;
};

}  // namespace QV::outlets
