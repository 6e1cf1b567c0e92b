#pragma once

#include <memory>
#include <string>

#include "outlets/outlet.h"
#include "ros2/bag/bag_writer.h"
#include "session/session.h"

namespace QV::ros2 {

struct RecorderOptions {
  BagOptions bag = {};
  /** True if all sensors are wanted, on behalf of a subscriber of this name; else those that
   * others want are recorded. */
  bool wantsAll = false;
  static constexpr const char* kSubscriber = "recording";
};

/**
 * Records a session as MCAP with ROS 2 messages: what drivers measure, what is asked of it, and at
 * each snapshot the records as they are. See docs/recordings.md for the topics. Times are those of
 * the session and a second, so that none is 0. What can't be written any more is logged once; the
 * session goes on without. Make it before the session has run; the session must outlive it.
 */
class QV_API SessionRecorder : public outlets::Outlet {
 public:
  /** Opens the file; "-" is standard output. One that can't be made: std::runtime_error. */
  SessionRecorder(const std::string& path, session::Session& session,
                  const RecorderOptions& options = {});
  ~SessionRecorder() override;

  session::Demand getDemand() const override;
  void show(const session::Snapshot& snapshot) override;
  void finish() override;

  /** True if something could not be written. */
  bool hasFailed() const;

 private:
  class Impl;
  const std::unique_ptr<Impl> impl;
};

}  // namespace QV::ros2
