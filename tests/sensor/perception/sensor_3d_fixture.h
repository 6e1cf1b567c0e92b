#pragma once

#include <optional>
#include <string>
#include <vector>

#include "robot/services/video_device.h"
#include "sensor/perception/sensor_3d.h"
#include "tests/support/fake_robot.h"

namespace QV::sensor {

using Scans = std::vector<std::vector<Math::Position3D>>;

/** Lets a test take single steps. */
struct OpenSensor3D : Sensor3D {
  using Sensor3D::Sensor3D;
  using Sensor3D::xComputeXYZCoordinates;
  using Sensor3D::xFilterScan;
};

struct Sensor3DTest : test::FakeRobotTest {
  static constexpr int kHighResolutionModel = 7;
  // The same in all tests: one process asks for them once.
  static constexpr float kHorizontal = 1.0f;
  static constexpr float kVertical = 0.8f;

  Sensor3DTest() { broker->registerModule(video); }

  void addCamera(int model = 1) {
    video->addCamera({2, "camera", model, kHorizontal, kVertical, source});
  }

  void make(int model = 1) {
    addCamera(model);
    sut.emplace("Depth", "Asus", broker, Math::SensorFieldOfView2D(0.4f, 8.0f, 1.1f, 1));
  }

  /** Starts before a wall at so many millimetres. */
  void startBefore(int millimetres) {
    make();
    depth = millimetres;
    sut->subscribe("me");
  }

  void fill(cv::Rect area, int millimetres) { depth(area).setTo(millimetres); }

  /** Returns the records after the next image. */
  std::vector<Math::MetricalData> next() {
    time.advance(boost::chrono::milliseconds(100));
    return sut->getData();
  }

  const std::string kError = "error Navigation.Sensor3D.";
  cv::Mat_<std::uint16_t> depth = cv::Mat_<std::uint16_t>(240, 320, std::uint16_t{0});
  robot::FrameSource source = [this](cv::Mat_<std::uint16_t>& frame, ko::Clock::time_point) {
    frame = depth.clone();
  };
  boost::shared_ptr<robot::VideoDevice> video = boost::make_shared<robot::VideoDevice>();
  std::optional<OpenSensor3D> sut;
};

}  // namespace QV::sensor
