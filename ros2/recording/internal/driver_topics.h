#pragma once

#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/math/transform.h"
#include "platform/middleware/qv_value.h"
#include "platform/model/robot.h"
#include "ros2/messages/sensor_msgs.h"
#include "ros2/recording/internal/frame_names.h"
#include "ros2/recording/internal/message_sink.h"
#include "ros2/recording/internal/sensor_sorts.h"

namespace QV::ros2 {

/** Writes the drivers' measurements as standard messages. */
class QV_API DriverTopics {
 public:
  /** The first two must outlive it; `kinds` are those of the robot's sensors. */
  DriverTopics(MessageSink& sink, const Model::Robot& robot, const Model::SensorKinds& kinds,
               const FrameNames& names);

  /** A Range that met nothing is its greatest from now on, and not infinite. */
  void tellNoEchoAsGreatestRange() { noEchoIsInfinite = false; }

  /** Notes the value of a sensor's key or event; other keys are left out. */
  void note(const std::string& key, const QVValue& value);
  /** True if something has been noted that was not written yet. */
  bool hasNews() const { return hasNew; }
  /** Writes the noted values, as measured at `time`. */
  void write(ko::Clock::time_point time);
  /** Writes an image as QVImage::fromQVValue reads it. */
  void writeImage(int camera, const QVValue& image, ko::Clock::time_point time);

 private:
  struct Sensor {
    const Model::SensorConfig* config;
    SensorSort sort;
    std::uint16_t topic = 0;
    /** The values as its keys hold them. */
    std::vector<float> values;
    /** Keys, from the first one on, of a measurement that goes on. */
    std::size_t noted = 0;
    /** True if a whole measurement was not written yet. */
    bool isNew = false;
  };
  struct Camera {
    const Model::SensorConfig* config;
    std::string frame;
    std::uint16_t image = 0;
    std::uint16_t info = 0;
    /** The way from the frame in which its people are reported. */
    Math::Transform people = {};
  };
  struct Place {
    std::size_t sensor;
    std::size_t value;
  };

  void xAdd(const Model::SensorConfig& config, SensorSort sort);
  void xAddCamera(const Model::Robot& robot, const Model::SensorConfig& config);
  std::optional<std::uint16_t> xAddTopic(const Model::SensorConfig& config, SensorSort sort);
  void xWriteScan(const Sensor& sensor, ko::Clock::time_point time);
  void xWriteRange(const Sensor& sensor, ko::Clock::time_point time);
  void xNote(const Place& place, const QVValue& value);
  void xNoteTouches(const QVValue& event);
  void xWritePeople(const QVValue& event, ko::Clock::time_point time);

  MessageSink& sink;
  const FrameNames names;
  bool noEchoIsInfinite = true;
  std::vector<Sensor> sensors;
  std::unordered_map<std::string, Place> places;
  std::vector<Camera> cameras;
  /** The touched links. */
  std::map<std::string, std::size_t> touched;
  std::optional<std::uint16_t> people;
  std::optional<QVValue> newPeople;
  bool hasNew = false;
  /** Keeps its memory from one to the next. */
  sensor_msgs::Image image;
};

}  // namespace QV::ros2
