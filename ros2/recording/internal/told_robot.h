#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include <boost/shared_ptr.hpp>
#include <opencv2/core.hpp>

#include "platform/middleware/qv_broker.h"
#include "robot/services/internal/device_manager.h"
#include "robot/services/internal/laser_mode_actuator.h"
#include "robot/services/internal/motion_service.h"
#include "robot/services/memory_service.h"
#include "robot/services/video_device.h"
#include "ros2/messages/sensor_msgs.h"
#include "ros2/recording/internal/bag_robot.h"
#include "ros2/recording/internal/topic_survey.h"

namespace QV::ros2 {

/**
 * Another robot's recording: what its topics tell goes into the modules of a robot that is
 * described after them, by the times of the log from 0 on. A gap of more than a minute is taken for
 * a second. Messages that can't be understood are left out and logged once for each topic.
 */
class ToldRobot : public BagRobot {
 public:
  /** Stands before the first message. What makes no sensor: std::runtime_error. */
  ToldRobot(const std::string& path, const TopicSurvey& survey);
  ~ToldRobot() override;

  sensor::NavigationModule& getNavigation() override { return *navigation; }
  const Model::Robot* getDescription() const override { return &model; }
  boost::shared_ptr<QVBroker> getBroker() const override { return broker; }
  std::string getSort() const override { return "log"; }
  std::string getTitle() const override { return title; }
  session::Frame getFrame() const override { return session::Frame::robot; }
  boost::shared_ptr<const OccupancyMap> getMap() const override { return map; }
  Math::Pose2D getPose() const override { return pose; }
  float getRadius() const override { return 0.25f; }
  /** Each sensor by itself, those that have been told something. */
  std::vector<Math::MetricalData> getRecords() override;
  void setListener(session::RunListener* newListener) override;

  std::optional<ko::Clock::time_point> getNextStep() const override;
  void makeStep() override;
  bool isAmidSteps() const override { return isAmid; }

  const BagReader& getBag() const override { return *bag; }
  ko::Clock::time_point getStart() const override { return start; }
  bool isNew(const std::string& sensor) const override { return news.count(sensor) > 0; }

 private:
  void xAddModules();
  void xAddCameras();
  void xWriteDefaults(const ToldSensor& sensor);
  /** The next message that says anything, and when it is due. */
  void xReadNext() const;
  ko::Clock::time_point xTimeOf(std::uint64_t logTime) const;

  void xTell(const BagMessage& message);
  void xTell(const ToldSensor& sensor, const BagMessage& message);
  void xTellScan(const ToldSensor& sensor, const sensor_msgs::LaserScan& scan);
  void xTellRange(const ToldSensor& sensor, const sensor_msgs::Range& range);
  void xTellImage(const ToldSensor& sensor, const sensor_msgs::Image& image);
  void xTellCloud(const ToldSensor& sensor, const sensor_msgs::PointCloud2& cloud);
  void xTellBeam(const ToldSensor& sensor, std::size_t beam, float range, float angle);
  void xTellTime(const ToldSensor& sensor);
  void xTellPlace(const BagMessage& message);

  const std::string title;
  const std::unique_ptr<BagReader> bag;
  TopicSurvey survey;
  const std::string description;
  const Model::Robot model;
  const boost::shared_ptr<QVBroker> broker = QVBroker::create();
  const boost::shared_ptr<robot::MemoryService> memory;
  const boost::shared_ptr<robot::DeviceManager> devices;
  const boost::shared_ptr<robot::MotionService> motion;
  const boost::shared_ptr<robot::VideoDevice> cameras;
  std::vector<std::unique_ptr<robot::LaserModeActuator>> modes;
  struct Seen {
    cv::Mat_<std::uint16_t> depth;
    ko::Clock::time_point time;
    bool isShown = true;
  };
  std::map<std::string, Seen> images;
  boost::shared_ptr<sensor::NavigationModule> navigation;
  std::optional<ScopedModule> hosting;
  boost::shared_ptr<const OccupancyMap> map = makeUnknownMap();
  session::RunListener* listener = nullptr;

  const ko::Clock::time_point start;
  Math::Pose2D pose;
  std::set<std::string> told;
  std::set<std::string> news;
  std::set<std::string> refused;
  bool isAmid = false;
  mutable std::optional<BagMessage> upcoming;
  mutable std::optional<std::uint64_t> lastLogTime;
  mutable ko::Clock::time_point due;
};

}  // namespace QV::ros2
