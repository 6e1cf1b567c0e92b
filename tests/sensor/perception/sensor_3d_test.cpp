#include "sensor/perception/sensor_3d.h"

#include <cmath>
#include <optional>

#include "robot/services/video_device.h"
#include "tests/support/depth_frames.h"
#include "tests/support/fake_robot.h"
#include "tests/support/flood_fill.h"

namespace QV::sensor {
namespace {

using boost::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int kHighResolutionModel = 7;
constexpr float kHorizontal = 1.0f;
constexpr float kVertical = 0.8f;
const std::string kError = "error Navigation.Sensor3D.";
const std::string kImageError = kError + "xUpdateScan: Error while getting new 3D image: ";

typedef std::vector<std::vector<Math::Position3D>> Scans;

/** Lets a test hand labels in. */
struct OpenSensor3D : Sensor3D {
  using Sensor3D::Sensor3D;
  using Sensor3D::xComputeXYZCoordinates;
};

/** The slow way, in double precision: a list of points for each large component. */
Scans reference(const cv::Mat_<std::uint16_t>& depth) {
  const cv::Mat_<int> labels = test::floodFill(depth, 100);
  std::map<int, std::vector<Math::Position3D>> byLabel;
  for (int v = 0; v < depth.rows; ++v) {
    for (int u = 0; u < depth.cols; ++u) {
      const double d = depth(v, u) * 0.001;
      if (labels(v, u) == 0 || depth(v, u) > 15000) continue;
      const double y = (0.5 - double(u) / depth.cols) * d * 2.0 * std::tan(kHorizontal / 2.0);
      const double z = (0.5 - double(v) / depth.rows) * d * 2.0 * std::tan(kVertical / 2.0);
      byLabel[labels(v, u)].push_back({float(d), float(y), float(z)});
    }
  }
  Scans scans;
  for (auto& [label, points] : byLabel) {
    if (points.size() >= depth.total() / 100) scans.push_back(std::move(points));
  }
  return scans;
}

/** The frames, and once more each without 56 of 80 columns: 70 % and more have no depth. */
std::vector<test::DepthFrame> withThinned(std::vector<test::DepthFrame> frames) {
  for (std::size_t i = 0, count = frames.size(); i < count; ++i) {
    cv::Mat_<std::uint16_t> depth = frames[i].depth.clone();
    for (int u = 24; u + 56 <= depth.cols; u += 80) depth.colRange(u, u + 56) = 0;
    frames.push_back({frames[i].name + " thinned", depth});
  }
  return frames;
}

float distance(const Math::Position3D& a, const Math::Position3D& b) {
  return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
}

class Sensor3DTest : public test::FakeRobotTest {
 protected:
  Sensor3DTest() { broker->registerModule(video); }

  void addCamera(int model = 1) {
    video->addCamera(
        {2, "camera", model, kHorizontal, kVertical,
         [this](cv::Mat_<std::uint16_t>& frame, ko::Clock::time_point) { frame = depth.clone(); }});
  }

  void make(int model = 1) {
    addCamera(model);
    sut.emplace("Depth", "Asus", broker, Math::SensorFieldOfView2D(0.4f, 8.0f, 1.0f, 1));
  }

  void fill(cv::Rect area, int millimetres) { depth(area).setTo(millimetres); }

  /** Once the next image was taken. */
  std::vector<Math::MetricalData> next() {
    time.advance(milliseconds(100));
    return sut->getData();
  }

  cv::Mat_<std::uint16_t> depth = cv::Mat_<std::uint16_t>(240, 320, std::uint16_t{0});
  boost::shared_ptr<robot::VideoDevice> video = boost::make_shared<robot::VideoDevice>();
  std::optional<OpenSensor3D> sut;
};

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
    EXPECT_EQ(record.fieldOfView.rayCount, 320);
    EXPECT_EQ(record.sensorTransform, test::tiltedFrame());
    EXPECT_EQ(record.timestamp, ko::Clock::now() - milliseconds(20));
  }
  EXPECT_THAT(log.lines(),
              ElementsAre(kError + "xComputeXYZCoordinates: Sensor3D filtering value x : 15001"));
}

TEST_F(Sensor3DTest, pruningGoesForListsThatWereThereBefore) {
  make();
  fill({0, 0, 320, 100}, 1000);
  Scans scans = {Scans::value_type(767), Scans::value_type(768)};
  sut->xComputeXYZCoordinates(depth, test::floodFill(depth, 100), scans);
  ASSERT_EQ(scans.size(), 2u);
  EXPECT_EQ(scans[0].size(), 768u);
  EXPECT_EQ(scans[1].size(), 32000u);
}

TEST_F(Sensor3DTest, whatFailsIsLoggedAndTheLastGoodImageStays) {
  make();
  depth = 1000;
  sut->subscribe("me");
  const float before = next().at(0).points[0].x;
  depth = 2000;
  const std::pair<const char*, std::string> calls[] = {
      {"QVVideoDevice.getImageRemote", "Error while getting new 3D image: broken"},
      {"QVMotion._getSensorTransformAtTime", "Error while getting tf: broken"}};
  for (const auto& [method, message] : calls) {
    log.clear();
    broker->planFailure(method, "broken");
    EXPECT_EQ(next().at(0).points[0].x, before);
    EXPECT_THAT(log.lines(), testing::Contains(kError + "xUpdateScan: " + message));
    broker->plan(method, {});
  }
  const cv::Mat_<std::uint16_t> whole = depth;
  depth = cv::Mat_<std::uint16_t>();
  EXPECT_EQ(next().at(0).points[0].x, before);
  EXPECT_THAT(log.lines(), testing::Contains(kError + "xUpdateScan: Error while getting new 3D "
                                                      "image (null pointer)"));
  depth = whole;
  broker->planFailure("QVVideoDevice.releaseImage", "broken");
  EXPECT_EQ(next().at(0).points[0].x, 2.0f);
  EXPECT_THAT(log.lines(), testing::Contains(kError + "xTryReleaseImage: Error while releasing 3D "
                                                      "image: broken"));
}

TEST_F(Sensor3DTest, whatIsNoDepthImageIsRefusedAndTheLastGoodOneStays) {
  make();
  depth = 1000;
  sut->subscribe("me");
  const auto before = next();
  ASSERT_THAT(before, SizeIs(1));
  const auto image = [](int width, int height, int colorSpace, std::size_t bytes) {
    return QVValue::array(width, height, colorSpace, 0, QVValue::Bytes(bytes, 1));
  };
  const std::string form = "QVImage::fromQVValue: [width, height, color space, microseconds, ";
  const std::string size = "QVImage::QVImage: a size from 1 by 1 to 65535 by 65535 expected, ";
  const std::string bytes = "QVImage::QVImage: 153600 bytes for 320 by 240 pixels of color space ";
  const std::optional<std::string> none;
  const std::pair<QVValue, std::optional<std::string>> cases[] = {
      {"picture", form + "pixels] expected, \"picture\" given"},
      {image(320, 240, 17, 153599), bytes + "17 expected, 153599 given"},
      {image(320, 240, 17, 153602), bytes + "17 expected, 153602 given"},
      {image(320, 240, 17, 0), bytes + "17 expected, 0 given"},
      {image(0, 240, 17, 0), size + "0 by 240 given"},
      {image(320, 0, 17, 153600), size + "320 by 0 given"},
      // What is an image, but not of depth, is refused in silence, and given back.
      {image(320, 240, 24, 230400), none},
      {image(320, 240, 11, 230400), none},
      {image(320, 240, 19, 921600), none},
      {image(320, 240, 99, 153600), none},
  };
  for (const auto& [value, error] : cases) {
    log.clear();
    broker->planAnswer("QVVideoDevice.getImageRemote", value);
    EXPECT_EQ(next(), before) << value;
    if (error) {
      EXPECT_THAT(log.lines(), ElementsAre(kImageError + *error));
    } else {
      EXPECT_THAT(log.lines(), IsEmpty()) << value;
      EXPECT_THAT(broker->callsTo("QVVideoDevice").back(), testing::StartsWith("releaseImage"));
    }
  }
}

TEST_F(Sensor3DTest, aCameraThatVanishesLeavesItsLastImageAndNoHandle) {
  make();
  depth = 1000;
  sut->subscribe("me");
  const auto before = next();
  video->removeCamera(2);
  depth = 2000;
  EXPECT_EQ(next(), before);
  EXPECT_EQ(next(), before);
  addCamera();
  EXPECT_EQ(next().at(0).points[0].x, 2.0f);
  video->removeCamera(2);
  sut->unsubscribe("me");
  EXPECT_THAT(video->getHandles(), IsEmpty());
  const std::string gone = kImageError + "QVVideoDevice::getImageRemote: no camera 2";
  EXPECT_THAT(log.lines(), ElementsAre(gone, gone));
}

TEST_F(Sensor3DTest, aCameraThatFailsToTellItsAnglesIsAskedAgain) {
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

TEST_F(Sensor3DTest, noHandleIsLeftButWhereGivingItBackFailed) {
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

TEST_F(Sensor3DTest, givesItsHandleBackOnceMoreAtItsEndWithoutATrace) {
  make();
  sut->subscribe("me");
  sut->unsubscribe("me");
  sut.reset();
  EXPECT_THAT(log.lines(), IsEmpty());
  EXPECT_THAT(broker->callsTo("QVVideoDevice"),
              testing::Contains("unsubscribe[\"Sensor3DDepth_1\"]").Times(2));
}

TEST_F(Sensor3DTest, aSubscriptionThatFailsLeavesNoHandleToGiveBack) {
  make();
  sut->subscribe("me");
  sut->unsubscribe("me");
  broker->planFailure("QVVideoDevice.subscribeCamera", "busy");
  sut->subscribe("me");
  const auto calls = broker->callsTo("QVVideoDevice");
  sut.reset();
  EXPECT_EQ(broker->callsTo("QVVideoDevice"), calls);
}

TEST_F(Sensor3DTest, aNewSubscriptionShowsTheFormerImageUntilTheFirstNewOne) {
  make();
  depth = 1000;
  sut->subscribe("me");
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

TEST_F(Sensor3DTest, agreesWithTheSlowWayOnRecordedFrames) {
  const auto frames = withThinned(test::loadDepthFrames());
  if (frames.empty()) GTEST_SKIP() << "QV_DATA does not name the real data";
  make(kHighResolutionModel);
  sut->subscribe("me");
  for (const auto& frame : frames) {
    depth = frame.depth;
    log.clear();
    const auto records = next();
    EXPECT_THAT(log.lines(), SizeIs(cv::countNonZero(depth > 15000))) << frame.name;
    const Scans expected = reference(depth);
    ASSERT_EQ(records.size(), expected.size()) << frame.name;
    for (std::size_t i = 0; i < records.size(); ++i) {
      ASSERT_EQ(records[i].points.size(), expected[i].size()) << frame.name << " " << i;
      float worst = 0.0f;
      for (std::size_t k = 0; k < expected[i].size(); ++k)
        worst = std::max(worst, distance(records[i].points[k], expected[i][k]));
      EXPECT_LT(worst, 0.001f) << frame.name << " " << i;
    }
  }
}

}  // namespace
}  // namespace QV::sensor
