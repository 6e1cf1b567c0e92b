#include "ros2/recording/internal/driver_topics.h"

#include <cmath>
#include <limits>
#include <utility>

#include <gmock/gmock.h>

#include "platform/middleware/contracts/motion_contract.h"
#include "platform/middleware/contracts/navigation_contract.h"
#include "platform/middleware/qv_motion_proxy.h"
#include "platform/vision/qv_image.h"
#include "ros2/messages/scene_msgs.h"
#include "session/open.h"

namespace QV::ros2 {
namespace {

/** Keeps all scans and people. */
struct Scans : MessageSink {
  std::uint16_t addTopic(const SessionTopic&) override { return count++; }
  void xWrite(std::uint16_t, std::uint64_t, const MessageType& type, const void* message) override {
    if (&type == &sensor_msgs::LaserScan::getType())
      all.push_back(*static_cast<const sensor_msgs::LaserScan*>(message));
    if (&type == &vision_msgs::Detection3DArray::getType())
      people.push_back(*static_cast<const vision_msgs::Detection3DArray*>(message));
  }

  std::uint16_t count = 0;
  std::vector<sensor_msgs::LaserScan> all;
  std::vector<vision_msgs::Detection3DArray> people;
};

struct DriverTopicsTest : testing::Test {
  /** Sets both keys of a beam, each at a time of its own, as in the machine's time. */
  void note(std::size_t beam, const QVValue& x, const QVValue& y = 0.0f) {
    sut.note(keys[2 * beam], x);
    sut.write(time += ko::Duration(1000));
    sut.note(keys[2 * beam + 1], y);
    sut.write(time += ko::Duration(1000));
  }
  void note(const std::vector<QVValue>& ranges) {
    for (std::size_t i = 0; i < keys.size() / 2; ++i)
      note(i, i < ranges.size() ? ranges[i] : QVValue(1.0f));
  }

  const std::unique_ptr<session::Session> session = session::openVirtual("porter");
  const Model::Robot& robot = *session->getDescription();
  const std::vector<std::string> keys = robot.sensorConfigs.at("FrontLaser").memoryKeys;
  ko::Clock::time_point time = ko::Clock::now();
  Scans scans;
  DriverTopics sut{scans, robot, session->getKinds(), FrameNames(*session)};
};

TEST_F(DriverTopicsTest, aMeasurementIsOneScanHoweverLongItsKeysTake) {
  note({1.5f});
  note({1.75f});
  ASSERT_EQ(scans.all.size(), 2u);
  EXPECT_EQ(scans.all[0].ranges[0], 1.5f);
  EXPECT_EQ(scans.all[1].ranges[0], 1.75f);
  // Whoever begins to hear amid one waits for the next.
  for (std::size_t beam = 5; beam < keys.size() / 2; ++beam) note(beam, 2.0f);
  EXPECT_EQ(scans.all.size(), 2u);
  note({2.5f});
  EXPECT_EQ(scans.all.size(), 3u);
}

TEST_F(DriverTopicsTest, aRangeThatIsNoneSaysWhy) {
  note({100.0f, 0.01f, std::numeric_limits<float>::quiet_NaN(), QVValue("broken")});
  ASSERT_EQ(scans.all.size(), 1u);
  const auto& ranges = scans.all[0].ranges;
  EXPECT_EQ(ranges[0], std::numeric_limits<float>::infinity());
  EXPECT_EQ(ranges[1], -std::numeric_limits<float>::infinity());
  EXPECT_TRUE(std::isnan(ranges[2]) && std::isnan(ranges[3]));
}

TEST_F(DriverTopicsTest, peopleAreInTheCamerasFrameInWhicheverTheyAreReported) {
  Model::Robot other = robot;
  other.sensorConfigs.at("DepthCamera").properties["cameraName"] = "LeftLaser";
  const QVMotionProxy motion(session->getBroker());
  const auto placeOf = [&](const std::string& name) {
    return Math::Transform(motion.getTransform(name, MotionContract::kGroundFrame, true));
  };
  for (const Model::Robot* described : {&robot, &std::as_const(other)}) {
    DriverTopics drivers{scans, *described, session->getKinds(), FrameNames(*session)};
    const QVValue ahead = QVValue::array(0, 2.0f, 0.0f, 0.0f);
    drivers.note(NavigationContract::kPeopleDetectedEvent,
                 QVValue::array(QVValue::array(0, 0), QVValue::array(ahead), QVValue(), QVValue(),
                                kDepthCamera));
    drivers.write(time);
    ASSERT_EQ(scans.people.back().header.frame_id, "DepthCamera");
    const auto& [x, y, z] = scans.people.back().detections.at(0).bbox.center.position;
    const auto told =
        placeOf("DepthCamera") *
        Math::Position3D(static_cast<float>(x), static_cast<float>(y), static_cast<float>(z));
    const auto reported = placeOf(described == &robot ? "camera" : "LeftLaser");
    const auto seen = reported * Math::Position3D(2.0f, 0.0f, 0.0f);
    EXPECT_LT(std::hypot(told.x - seen.x, told.y - seen.y, told.z - seen.z), 1e-5f);
  }
}

}  // namespace
}  // namespace QV::ros2
