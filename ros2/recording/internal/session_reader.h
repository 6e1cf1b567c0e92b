#pragma once

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "ros2/bag/bag_reader.h"
#include "ros2/messages/sensor_msgs.h"
#include "ros2/recording/internal/input_codec.h"
#include "ros2/recording/internal/recording_facts.h"
#include "ros2/recording/internal/waiting_bytes.h"

namespace QV::ros2 {

/** The drivers' inputs at one time. */
struct SessionInputs {
  ko::Clock::time_point time;
  bool stepped = false;
  Math::Pose2D velocity;
  std::vector<InputWrite> writes;
  WaitingBytes::Claim claim;
};

struct SessionImage {
  ko::Clock::time_point time;
  ko::Clock::time_point stamp;
  cv::Mat_<std::uint16_t> depth;
  WaitingBytes::Claim claim;
};

/** An event of a session between two moments of time. */
struct SessionEvent {
  enum class Sort { command, pose, look };
  Sort sort = Sort::look;
  ko::Clock::time_point time;
  qv_msgs::Command command = {};
  Math::Pose2D pose = {};
  std::vector<Math::MetricalData> records = {};
  WaitingBytes::Claim claim = {};
};

/**
 * Reads a recording of SessionRecorder again, in its order and no further than it is asked to.
 * The caller takes messages from the queues. Throws std::runtime_error with the topic for a
 * malformed message, or if more than WaitingBytes::kMost wait.
 */
class SessionReader {
 public:
  /** Reads the part before the session. */
  explicit SessionReader(const std::string& path);

  const RecordingFacts& getFacts() const { return facts; }
  const std::string& getDescription() const { return description; }
  /** Null if there is none. */
  const boost::shared_ptr<OccupancyMap>& getMap() const { return map; }
  const BagReader& getBag() const { return bag; }
  /** Looks so far whose points are missing. */
  std::uint64_t countLeftOut() const { return leftOut; }

  /** Reads until all inputs up to `time` are in the queue. */
  void readInputsTo(ko::Clock::time_point time);
  /** Reads until an event is in the queue; false at the end. */
  bool readEvent();

  std::deque<SessionInputs> inputs;
  /** The images by the name of the camera's sensor. */
  std::map<std::string, std::deque<SessionImage>> images;
  std::deque<SessionEvent> events;

 private:
  bool xRead();
  void xTake(const BagMessage& message);
  void xTakeInputs(const BagMessage& message);
  void xTakeTransforms(const BagMessage& message);
  void xTakeImage(const BagMessage& message);
  void xTakeCloud(const BagMessage& message);
  void xTakeImagePoints(const BagMessage& message);
  void xTakeRecords(const BagMessage& message);
  /** False if its cloud of this time is missing. */
  bool xAddPoints(const qv_msgs::MetricalData& message, std::uint64_t time,
                  Math::MetricalData& record) const;
  void xTakeMap(const BagMessage& message);

  const std::string path;
  BagReader bag;
  RecordingFacts facts;
  std::string description;
  boost::shared_ptr<OccupancyMap> map;
  WaitingBytes waiting;
  InputDecoder decoder;
  struct Cloud {
    std::uint64_t time = 0;
    std::vector<Math::Position3D> points;
    WaitingBytes::Claim claim;
  };
  /** The last clouds by topic. */
  std::map<std::string, Cloud> clouds;
  /** The last few images by topic. */
  std::map<std::string, std::deque<SessionImage>> recentImages;
  ko::Clock::time_point lastInput;
  std::uint64_t leftOut = 0;
};

}  // namespace QV::ros2
