#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>
#include <opencv2/core.hpp>

#include "platform/api.h"
#include "platform/middleware/qv_broker.h"
#include "platform/model/robot.h"
#include "platform/model/sensor_kinds.h"
#include "robot/services/internal/device_manager.h"
#include "robot/services/internal/laser_mode_actuator.h"
#include "robot/services/internal/memory_service.h"
#include "robot/services/internal/motion_service.h"
#include "robot/services/internal/sonar_driver.h"
#include "robot/services/video_device.h"
#include "ros2/recording/internal/refusal_log.h"
#include "ros2/recording/internal/told_frames.h"
#include "ros2/recording/internal/topic_survey.h"
#include "session/internal/session_listener.h"

namespace QV::ros2 {

/**
 * Dates the measurement of a message by its stamp; std::runtime_error for a stamp that can't be.
 */
using Dating = std::function<ko::Clock::time_point(const builtin_interfaces::Time&)>;

/**
 * The modules of a robot whose drivers are other nodes' messages: their measurements go where
 * sensors read them. A sensor without messages gives no record. A malformed message is refused and
 * logged by RefusalLog. Thread-safe; one thread at a time passes messages.
 */
class QV_API ToldModules {
 public:
  /** `description` has the sensors of `survey`, of these kinds; `category` is for the log. */
  ToldModules(const std::string& description, TopicSurvey survey, Dating dating,
              const std::string& category,
              const Model::SensorKinds& kinds = Model::SensorKinds::standard());
  ~ToldModules();
  ToldModules(const ToldModules&) = delete;
  ToldModules& operator=(const ToldModules&) = delete;

  const boost::shared_ptr<QVBroker>& getBroker() const { return broker; }
  const Model::Robot& getModel() const { return model; }
  const TopicSurvey& getSurvey() const { return survey; }
  Math::Pose2D getPose() const { return frames.getPose(); }
  Math::Pose2D getVelocity() const { return motion->getRobotVelocity(); }
  bool wantsPeople() const;

  /** True if anything is made of such a message. */
  bool hears(const std::string& topic, const std::string& type) const;
  void tell(const ToldMessage& message);
  /** Forgets the sensor of this topic, as if it had never had a message. */
  void forget(const std::string& topic);

  /** True if a sensor has had a message, or an image was fetched, since clearNews(). */
  bool isNew(const std::string& sensor) const;
  void clearNews();

  /** The listener to all messages, which must outlive this; null for none. */
  void setListener(session::SessionListener* newListener);

 private:
  struct Seen {
    cv::Mat_<std::uint16_t> depth;
    ko::Clock::time_point time;
    bool isShown = true;
  };

  void xAddModules(const std::string& description);
  void xAddCameras();
  void xShowImage(const std::string& sensor, cv::Mat_<std::uint16_t>& depth,
                  ko::Clock::time_point& time);
  void xForget(const ToldSensor& sensor);

  void xTell(const ToldMessage& message);
  void xTell(ToldSensor& sensor, BytesView cdr);
  void xTellScan(ToldSensor& sensor, const sensor_msgs::LaserScan& scan);
  void xTellRange(const ToldSensor& sensor, const sensor_msgs::Range& message);
  void xTellImage(const ToldSensor& sensor, const sensor_msgs::Image& image);
  void xTellCloud(const ToldSensor& sensor, const sensor_msgs::PointCloud2& cloud);
  void xWriteBeam(const ToldSensor& sensor, std::size_t beam, float range, float angle);
  void xWriteTime(const ToldSensor& sensor, ko::Clock::time_point time);
  void xWriteRange(const ToldSensor& sensor, const QVValue& value);
  void xRaiseTouch(const ToldSensor& sensor, bool isTouched);
  void xTellPeople(BytesView cdr);
  void xTellJoints(BytesView cdr);
  void xTellOdometry(BytesView cdr);
  /** Throws for a message in a frame that is not the sensor's, as far as anybody says. `middle` is
   * that of a scan, see middleOf. */
  void xCheckFrame(const ToldSensor& sensor, const std_msgs::Header& header,
                   float middle = 0.0f) const;
  Math::Transform xMountingOf(const std::string& name) const;
  /** Returns the way from a frame to that in which people are reported; throws as above.
   * std::nullopt as long as tf may still name the frame. */
  std::optional<Math::Transform> xWayToPeople(const std::string& frame) const;
  const Model::SensorConfig& xConfigOf(const ToldSensor& sensor) const;

  TopicSurvey survey;
  ToldFrames frames;
  const Dating dating;
  const Model::Robot model;
  const boost::shared_ptr<QVBroker> broker = QVBroker::create();
  const boost::shared_ptr<robot::MemoryService> memory;
  const boost::shared_ptr<robot::DeviceManager> devices;
  const boost::shared_ptr<robot::MotionService> motion;
  const boost::shared_ptr<robot::VideoDevice> cameras;
  robot::LaserModes modes;
  RefusalLog refusals;
  session::SessionListener* listener = nullptr;

  /** Guards what follows. */
  mutable std::mutex mutex;
  std::map<std::string, Seen> images;
  std::set<std::string> touched;
  std::set<std::string> news;
};

}  // namespace QV::ros2
