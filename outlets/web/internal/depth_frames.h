#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "outlets/web/internal/depth_view.h"
#include "session/session.h"

namespace QV::outlets {

/** The name of the depth camera that the robot has a sensor for; empty if there is none. */
std::string findDepthSensor(const session::Session& session);

/** The depth camera's frames, five a second while it runs. For one thread. */
class DepthFrames {
 public:
  /** See DepthView; `sensor` is the camera's, empty for none. The session must outlive it. */
  DepthFrames(const session::Session& session, std::string sensor);

  const std::string& getSensor() const { return sensor; }
  /** Returns the next image in millimetres, 0: no depth; std::nullopt if no image is due. */
  std::optional<cv::Mat_<std::uint16_t>> next(const session::Snapshot& snapshot);
  /** No more for now. */
  void rest() { view->rest(); }
  bool isResting() const { return view->isResting(); }

 private:
  const session::Session& session;
  const std::string sensor;
  /** Another when a recording is played from its start again. */
  boost::shared_ptr<QVBroker> broker;
  std::unique_ptr<DepthView> view;
  std::chrono::steady_clock::time_point due = {};
};

}  // namespace QV::outlets
