#pragma once

#include <memory>
#include <string>

#include "outlets/outlet.h"
#include "ros2/bag/bag_writer.h"
#include "session/session.h"

namespace QV::ros2 {

struct RecorderOptions {
  BagOptions bag = {};
  /** True: subscribes to all sensors as kSubscriber. False: records only sensors that others have
   * subscribed to. */
  bool wantsAll = false;
  static constexpr const char* kSubscriber = "recording";
};

/**
 * Records a session as MCAP with ROS 2 messages: the drivers' measurements, the commands, and at
 * each snapshot the records. See docs/recordings.md for the topics. Recorded time is session time +
 * 1 s, so it is never 0.
 * - Lifetime: construct it before the session runs; the session must outlive it. The file is
 *   complete only after finish().
 * - Threads: for the session's thread.
 * - Errors: a failed write is logged once; the session goes on without a recording.
 *
 *     const auto session = QV::session::openVirtual("porter");
 *     QV::ros2::SessionRecorder recorder("run.mcap", *session);
 *     recorder.show(session->look());  // after each run of the session
 *     recorder.finish();
 */
class QV_API SessionRecorder : public outlets::Outlet {
 public:
  /** Opens the file; "-" is standard output. Throws std::runtime_error if it can't be created. */
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
