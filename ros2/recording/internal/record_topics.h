#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "ros2/messages/report_msgs.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/messages/sensor_msgs.h"
#include "ros2/recording/internal/camera_points.h"
#include "ros2/recording/internal/frame_names.h"
#include "ros2/recording/internal/message_sink.h"
#include "session/snapshot.h"

namespace QV::ros2 {

/** Writes a snapshot: the records, without loss and as points, and the subscribers. */
class QV_API RecordTopics {
 public:
  /**
   * `mounted` are the sensors that have frames of their own. Points of cameras go to
   * `cameraPoints`, where that is not null. Both sinks must outlive it.
   */
  RecordTopics(MessageSink& sink, const FrameNames& names, std::set<std::string> mounted,
               CameraPoints* cameraPoints = nullptr);

  /** Makes the topics of their points now, and not when there are some for the first time. */
  void announce(const std::set<std::string>& sensors);
  void write(const session::Snapshot& snapshot);
  /** The next snapshot's health is written in any case. */
  void repeatHealth() { lastHealth.reset(); }

 private:
  /** True if a sensor's points go into a cloud as they are, and not into its records. */
  bool xHasOwnCloud(const session::SensorState& sensor) const;
  std::uint16_t xTopicOf(const std::string& name);
  void xAddRecords(const session::SensorState& sensor);
  /** Adds records without their points, which are in a message on this topic. */
  void xAddRecordsOf(const session::SensorState& sensor, const std::string& topic);
  void xWriteSensor(const session::SensorState& sensor, ko::Clock::time_point time);
  void xWritePeople(const session::Snapshot& snapshot);
  void xNoteView(const session::SensorState& sensor, const session::Snapshot& snapshot);
  void xWriteStates(const session::Snapshot& snapshot);
  /** Writes the health of sensors that have come into another state. */
  void xWriteHealth(const session::Snapshot& snapshot);

  MessageSink& sink;
  const FrameNames names;
  const std::set<std::string> mounted;
  CameraPoints* const cameraPoints;
  const std::uint16_t records;
  const std::uint16_t states;
  const std::uint16_t views;
  const std::uint16_t people;
  const std::uint16_t diagnostics;
  qv_msgs::Records message;
  sensor_msgs::PointCloud2 cloud;
  std::map<std::string, std::uint16_t> clouds;
  std::map<std::string, Math::SensorFieldOfView2D> seenViews;
  visualization_msgs::MarkerArray markers;
  bool hasNewViews = false;
  bool hasShownPeople = false;
  qv_msgs::SensorStates lastStates;
  std::optional<std::vector<std::pair<std::string, sensor::HealthState>>> lastHealth;
};

}  // namespace QV::ros2
