#pragma once

#include <memory>
#include <optional>
#include <string>

#include <boost/shared_ptr.hpp>

#include "ros2/recording/internal/bag_robot.h"
#include "ros2/recording/internal/told_modules.h"

namespace QV::ros2 {

/**
 * Surveys half a minute of a recording, and on until each topic has come up. std::runtime_error if
 * no topic makes a sensor.
 */
TopicSurvey surveyTopics(const std::string& path);

/**
 * A recording of another robot: its messages go to the modules of a robot whose description is
 * derived from them, by the log's times from 0 on. A gap of more than a minute is played as 1 s.
 */
class ToldRobot : public BagRobot {
 public:
  /** Stands before the first message of the file, which `bag` reads. Throws std::runtime_error
   * without a sensor topic. */
  ToldRobot(const std::string& path, std::unique_ptr<BagReader> bag, const TopicSurvey& survey);

  sensor::NavigationModule& getNavigation() override { return *navigation; }
  const Model::Robot* getDescription() const override { return &modules.getModel(); }
  boost::shared_ptr<QVBroker> getBroker() const override { return modules.getBroker(); }
  std::string getSort() const override { return "log"; }
  std::string getTitle() const override { return title; }
  session::Frame getFrame() const override { return session::Frame::robot; }
  boost::shared_ptr<const OccupancyMap> getMap() const override { return map; }
  Math::Pose2D getPose() const override { return modules.getPose(); }
  Math::Pose2D getVelocity() const override { return modules.getVelocity(); }
  float getRadius() const override { return 0.25f; }
  /** Each sensor by itself: the manager's refresh would miss steps, and read others twice. */
  std::vector<Math::MetricalData> getRecords() override;
  void setListener(session::SessionListener* listener) override { modules.setListener(listener); }

  std::optional<ko::Clock::time_point> getNextStep() const override;
  void makeStep() override;
  bool isAmidSteps() const override { return isAmid; }

  const BagReader& getBag() const override { return *bag; }
  ko::Clock::time_point getStart() const override { return start; }
  bool isNew(const std::string& sensor) const override { return modules.isNew(sensor); }

 private:
  bool xTellsSensor(const BagMessage& message) const;
  /** The next message that says anything, and when it is due. */
  void xReadNext() const;
  ko::Clock::time_point xTimeOf(std::uint64_t logTime) const;

  const std::string title;
  const std::unique_ptr<BagReader> bag;
  ToldModules modules;
  boost::shared_ptr<sensor::NavigationModule> navigation;
  std::optional<ScopedModule> hosting;
  boost::shared_ptr<const OccupancyMap> map = makeUnknownMap();

  const ko::Clock::time_point start;
  bool isAmid = false;
  mutable std::optional<BagMessage> upcoming;
  mutable std::uint64_t lastLogTime;
  mutable ko::Clock::time_point due;
};

}  // namespace QV::ros2
