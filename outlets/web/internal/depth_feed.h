#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "outlets/web/internal/depth_picture.h"
#include "outlets/web/internal/depth_view.h"
#include "sensor/core/sensor_manager.h"
#include "session/snapshot.h"

namespace QV::outlets {

/** The name of the manager's depth camera; empty if there is none. */
std::string findDepthSensor(sensor::SensorManager& manager);

/** The depth camera's frames as messages to a page, five a second while it runs. For one thread. */
class DepthFeed {
 public:
  /** See DepthView; `sensor` is the camera's, empty for none. */
  DepthFeed(boost::shared_ptr<QVBroker> broker, std::string sensor);

  /** A message, if one is due. */
  std::optional<std::string> next(const session::Snapshot& snapshot);
  /** No more for now. */
  void rest() { view.rest(); }
  bool isResting() const { return view.isResting(); }

 private:
  const std::string sensor;
  DepthView view;
  DepthPainter painter;
  std::chrono::steady_clock::time_point due = {};
};

}  // namespace QV::outlets
