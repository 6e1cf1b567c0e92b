#include <algorithm>
#include <atomic>
#include <cmath>
#include <latch>
#include <thread>

#include "sensor/core/internal/health_board.h"
#include "tests/sensor/perception/sensor_3d_fixture.h"

namespace QV::sensor {
namespace {

TEST_F(Sensor3DTest, largeComponentsAreRecordsInOrderOfTheirFirstPixels) {
  make();
  fill({160, 20, 32, 24}, 15000);  // 768 pixels, as few as are kept.
  fill({0, 10, 59, 13}, 2000);     // One less.
  fill({0, 120, 100, 50}, 3000);
  depth(239, 0) = 15001;
  motion->transform = test::tiltedFrame().toVector();
  sut->subscribe("me");
  time.runDue();
  EXPECT_THAT(broker->callsTo("QVVideoDevice"),
              testing::Contains("subscribeCamera[\"Sensor3DDepth\", 2, 8, 17, 11]"));
  EXPECT_THAT(broker->callsTo("QVMotion"),
              ElementsAre("_getSensorTransformAtTime[\"Depth\", 80000000]"));
  const auto records = sut->getData();
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].points.size(), 768u);
  EXPECT_FLOAT_EQ(records[0].points[0].x, 15.0f);
  EXPECT_EQ(records[0].points[0].y, 0.0f);
  EXPECT_EQ(records[1].points.size(), 5000u);
  EXPECT_NEAR(records[1].points[0].y, 3.0f * std::tan(kHorizontal / 2), 1e-5f);
  EXPECT_EQ(records[1].points[0].z, 0.0f);
  for (const auto& record : records) {
    EXPECT_EQ(record.sensorName, "Depth");
    EXPECT_EQ(record.fieldOfView, Math::SensorFieldOfView2D(0.4f, 8.0f, 1.1f, 320));
    EXPECT_EQ(record.sensorTransform, test::tiltedFrame());
    EXPECT_EQ(record.timestamp, ko::Clock::now() - milliseconds(20));
  }
  EXPECT_THAT(log.lines(),
              ElementsAre(kError + "xComputeXYZCoordinates: Sensor3D filtering value x : 15001"));
}

TEST_F(Sensor3DTest, afterAFailureTheLastGoodImageStaysExceptAfterAFailedRelease) {
  startBefore(1000);
  const auto before = next();
  const cv::Mat_<std::uint16_t> later(depth.size(), std::uint16_t{2000});
  depth = later;
  for (const char* method :
       {"QVVideoDevice.getImageRemote", "QVMotion._getSensorTransformAtTime"}) {
    broker->planFailure(method, "broken");
    EXPECT_EQ(next(), before) << method;
    broker->plan(method, {});
  }
  depth = cv::Mat_<std::uint16_t>();
  EXPECT_EQ(next(), before);
  EXPECT_EQ(log.lines().back(),
            kError + "xUpdateScan: Error while getting new 3D image (null pointer)");
  depth = later;
  broker->planFailure("QVVideoDevice.releaseImage", "broken");
  EXPECT_EQ(next().at(0).points[0].x, 2.0f);
}

TEST_F(Sensor3DTest, anImageWithoutDepthLeavesNoRecord) {
  startBefore(1000);
  EXPECT_THAT(next(), SizeIs(1));
  depth = 0;
  EXPECT_THAT(next(), IsEmpty());
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(Sensor3DTest, imagesInWhichNoNeighboursAreAlikeAreNoisy) {
  startBefore(1000);
  const HealthBoard::Sensors sensors{{"Depth", {boost::shared_ptr<Sensor>(), &*sut}}};
  HealthBoard health(sensors);
  health.describe(*sut, {Model::PointMeaning::scan}, milliseconds(100));
  const auto healthAfter = [&](int images) {
    for (int i = 0; i < images; ++i) {
      next();
      health.tick();
    }
    return health.get("Depth")->state;
  };
  health.beAsked();
  health.setRefreshed(true);
  EXPECT_EQ(healthAfter(20), HealthState::sound);
  cv::randu(depth, 500, 8000);
  // What no camera measures has a line in the log.
  fill({100, 100, 1, 1}, 65535);
  EXPECT_EQ(healthAfter(20), HealthState::noisy) << health.get("Depth")->reason;
}

TEST_F(Sensor3DTest, anImageWithoutATransformIsHeldUntilTheNextOneIsAskedFor) {
  startBefore(1000);
  next();
  broker->planFailure("QVMotion._getSensorTransformAtTime", "broken");
  next();
  EXPECT_THAT(broker->callsTo("QVVideoDevice").back(), testing::StartsWith("getImageRemote"));
  broker->plan("QVMotion._getSensorTransformAtTime", {});
  depth = 2000;
  EXPECT_EQ(next().at(0).points[0].x, 2.0f);
  EXPECT_THAT(broker->callsTo("QVVideoDevice").back(), testing::StartsWith("releaseImage"));
  EXPECT_THAT(log.lines(), ElementsAre(kError + "xUpdateScan: Error while getting tf: broken",
                                       testing::HasSubstr("which is taken back")));
}

TEST_F(Sensor3DTest, readersSeeWholeImagesWhileTheMemoryOfOldOnesIsUsedAgain) {
  startBefore(1000);
  time.runDue();
  std::latch reading(1);
  std::atomic<bool> done{false};
  std::atomic<int> torn{0};
  std::thread reader([&] {
    while (!done) {
      const auto records = sut->getData();
      const auto& points = records.at(0).points;
      torn += std::any_of(points.begin(), points.end(),
                          [&](const auto& point) { return point.x != points[0].x; });
      if (!reading.try_wait()) reading.count_down();
    }
  });
  reading.wait();
  for (int millimetres = 1001; millimetres < 1100; ++millimetres) {
    depth = millimetres;
    time.advance(milliseconds(100));
  }
  done = true;
  reader.join();
  EXPECT_EQ(torn, 0);
}

TEST_F(Sensor3DTest, anImageThatIsNotDepthIsRefusedAndTheLastGoodOneStays) {
  startBefore(1000);
  const auto before = next();
  ASSERT_THAT(before, SizeIs(1));
  const auto answerImage = [this](int colorSpace, std::size_t bytes) {
    broker->planAnswer("QVVideoDevice.getImageRemote",
                       QVValue::array(320, 240, colorSpace, 0, QVValue::Bytes(bytes, 1)));
  };
  answerImage(17, 153599);
  EXPECT_EQ(next(), before);
  EXPECT_THAT(log.lines(),
              ElementsAre(kError + "xUpdateScan: Error while getting new 3D image: "
                                   "QVImage::QVImage: 153600 bytes for 320 by 240 pixels of "
                                   "color space 17 expected, 153599 given"));
  log.clear();
  // Images that are not depth are refused without a log line, and released.
  for (const auto& [colorSpace, bytes] :
       {std::pair(24, 230400u), {11, 230400u}, {19, 921600u}, {99, 153600u}}) {
    answerImage(colorSpace, bytes);
    EXPECT_EQ(next(), before) << colorSpace;
    EXPECT_THAT(broker->callsTo("QVVideoDevice").back(), testing::StartsWith("releaseImage"));
  }
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(Sensor3DTest, aCameraThatFailsToGiveItsAnglesIsAskedAgain) {
  make();
  depth = 1000;
  int asked = 0;
  broker->plan("QVVideoDevice.getVerticalFOV", [&] {
    if (++asked == 1) throw std::runtime_error("broken");
  });
  sut->subscribe("me");
  time.runDue();
  if (asked == 0) GTEST_SKIP() << "another test of this process has asked";
  EXPECT_THAT(sut->getData(), IsEmpty());
  EXPECT_THAT(next(), SizeIs(1));
}

TEST_F(Sensor3DTest, allHandlesAreReleasedExceptWhereTheReleaseFailed) {
  make();
  const std::pair<std::string, std::string> faults[] = {
      {"QVVideoDevice.subscribeCamera",
       "xSubscribeToHardware: Could not subscribe to QVVideoDevice: "},
      {"QVVideoDevice.getImageRemote", "xUpdateScan: Error while getting new 3D image: "},
      {"QVMotion._getSensorTransformAtTime", "xUpdateScan: Error while getting tf: "},
      {"QVVideoDevice.releaseImage", "xTryReleaseImage: Error while releasing 3D image: "},
      {"QVVideoDevice.unsubscribe",
       "xUnsubscribeFromHardware: Could not unsubscribe from QVVideoDevice: "}};
  for (std::size_t i = 0; i < 10000; ++i) {
    const auto& [method, message] = faults[i % std::size(faults)];
    log.clear();
    broker->planFailure(method, "broken");
    sut->subscribe("me");
    time.runDue();
    sut->unsubscribe("me");
    ASSERT_THAT(log.lines(), ElementsAre(kError + message + "broken"));
    ASSERT_EQ(sut->isDiagnosisSucess(), message.find("ubscribe") == message.npos);
    broker->plan(method, {});
    sut->setDiagnosis(true);
  }
  EXPECT_THAT(video->getHandles(), SizeIs(2000));
}

TEST_F(Sensor3DTest, theDestructorReleasesItsHandleAgainAndLogsNothing) {
  make();
  sut->subscribe("me");
  sut->unsubscribe("me");
  sut.reset();
  EXPECT_THAT(log.lines(), IsEmpty());
  const std::string release = "unsubscribe[\"Sensor3DDepth_1\"]";
  EXPECT_THAT(broker->callsTo("QVVideoDevice"), testing::Contains(release).Times(2));
}

TEST_F(Sensor3DTest, theDestructorHasNoHandleToReleaseAfterAFailedStart) {
  make();
  sut->subscribe("me");
  sut->unsubscribe("me");
  broker->planFailure("QVVideoDevice.subscribeCamera", "broken");
  sut->subscribe("me");
  sut.reset();
  EXPECT_THAT(broker->callsTo("QVVideoDevice").back(), StartsWith("subscribeCamera"));
}

TEST_F(Sensor3DTest, afterARestartTheLastImageIsShownUntilANewOneComes) {
  startBefore(1000);
  const auto former = next();
  sut->unsubscribe("me");
  depth = 2000;
  EXPECT_THAT(next(), IsEmpty());
  EXPECT_THAT(log.lines(), IsEmpty());
  sut->subscribe("me");
  EXPECT_EQ(sut->getData(), former);
  time.runDue();
  EXPECT_EQ(sut->getData().at(0).points[0].x, 2.0f);
}

}  // namespace
}  // namespace QV::sensor
