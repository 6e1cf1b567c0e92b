// Draws what the depth camera makes of recorded frames, a folder of 16-bit PNGs: the depth in grey
// (near is bright, invalid black) beside the points, in a colour for each component.
#include <cmath>
#include <iostream>

#include <boost/make_shared.hpp>
#include <opencv2/imgcodecs.hpp>

#include "platform/ko/log.h"
#include "platform/ko/simulated_time.h"
#include "robot/services/depth_recording.h"
#include "robot/services/video_device.h"
#include "sensor/perception/sensor_3d.h"

constexpr float kHorizontalFOV = 1.09f;  // rad
constexpr float kVerticalFOV = 0.86f;
const cv::Vec3b kColors[] = {{255, 120, 60}, {60, 200, 60}, {60, 60, 255},   {0, 210, 255},
                             {220, 60, 200}, {230, 220, 0}, {140, 255, 160}, {190, 150, 255}};

void drawDepth(const cv::Mat_<std::uint16_t>& depth, cv::Mat_<cv::Vec3b> picture) {
  double nearest = 0.0;
  cv::minMaxLoc(depth, &nearest, nullptr, nullptr, nullptr, depth != 0);
  cv::Mat grey;
  cv::divide(255.0 * nearest, depth, grey, CV_8U);  // What is divided by 0 becomes 0.
  cv::merge(std::vector<cv::Mat>(3, grey), picture);
}

void drawPoints(const std::vector<QV::Math::MetricalData>& records, cv::Mat_<cv::Vec3b> picture) {
  const float xToY = 2.0f * std::tan(kHorizontalFOV / 2.0f);
  const float xToZ = 2.0f * std::tan(kVerticalFOV / 2.0f);
  for (std::size_t i = 0; i < records.size(); ++i) {
    for (const auto& point : records[i].points) {
      const float right = 0.5f - point.y / point.x / xToY;
      const float down = 0.5f - point.z / point.x / xToZ;
      picture(cvFloor(down * static_cast<float>(picture.rows) + 0.01f),
              cvFloor(right * static_cast<float>(picture.cols) + 0.01f)) =
          kColors[i % std::size(kColors)];
    }
  }
}

int main(int argc, char** argv) try {
  if (argc != 4) {
    std::cerr << "Usage: example_depth_components FOLDER METRES_PER_UNIT OUT\n";
    return 2;
  }
  ko::SimulatedTime time;
  ko::log::setLevel("Navigation.Sensor3D", ko::log::Level::fatal);  // No line a pixel beyond 15 m.
  QV::robot::DepthRecording recording(argv[1], std::stod(argv[2]), 10.0);
  cv::Mat_<std::uint16_t> depth;
  const auto video = boost::make_shared<QV::robot::VideoDevice>();
  video->addCamera({2, "camera", 7, kHorizontalFOV, kVerticalFOV, [&](auto& frame, auto now) {
                      recording(frame, now);
                      depth = frame;
                    }});
  const auto motion = boost::make_shared<QV::QVModule>("QVMotion");
  motion->bindMethod("_getSensorTransformAtTime", [](const std::string&, ko::Clock::time_point) {
    return QV::Math::Transform().toVector();
  });
  const auto broker = QV::QVBroker::create();
  broker->registerModule(video);
  broker->registerModule(motion);
  QV::sensor::Sensor3D sensor("DepthCamera", "Asus", broker, {});
  sensor.subscribe("my navigation");
  time.runDue();
  for (std::size_t i = 0; i < recording.getFrameCount(); ++i) {
    cv::Mat_<cv::Vec3b> picture(depth.rows, 2 * depth.cols, cv::Vec3b());
    drawDepth(depth, picture.colRange(0, depth.cols));
    drawPoints(sensor.getData(), picture.colRange(depth.cols, picture.cols));
    const std::string file = argv[3] + ("/components_" + std::to_string(i) + ".png");
    if (!cv::imwrite(file, picture)) throw std::runtime_error("cannot write " + file);
    time.advance(boost::chrono::milliseconds(100));
  }
} catch (const std::exception& error) {
  std::cerr << error.what() << "\n";
  return 1;
}
