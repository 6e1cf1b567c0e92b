#include "ros2/recording/internal/camera_points.h"

#include <algorithm>

#include <gmock/gmock.h>

#include "session/internal/session_listener.h"
#include "tests/ros2/recording/recorded_session.h"

namespace QV::ros2 {
namespace {

struct ImagesHeard : session::SessionListener {
  void onWrite(const std::string&, const QVValue&, bool) override {}
  void onStep(const robot::BodyStep&) override {}
  void onCommand(const session::SessionCommand&) override {}
  void onImage(int, const QVValue& image) override { all.push_back(image); }

  std::vector<QVValue> all;
};

struct NoReader : MessageSink {
  std::uint16_t addTopic(const SessionTopic&) override { return 0; }
  void xWrite(std::uint16_t, std::uint64_t, const MessageType&, const void*) override {}
};

// A recording has one image per time, so points of the first could not be made again.
TEST(CameraPoints, aSecondImageOfATimeReplacesTheFirst) {
  const auto session = session::openVirtual("porter", test::busyWorld());
  ImagesHeard images;
  addListener(*session, images);
  session->subscribe("test", session->getManager().getFamilyNames());
  session->drive(0.5f, 0.5f);
  session->run(boost::chrono::milliseconds(500));
  removeListener(*session, images);
  ASSERT_GT(images.all.size(), 1u);

  const auto snapshot = session->look();
  const auto camera =
      std::ranges::find(snapshot.sensors, "DepthCamera", &session::SensorState::name);
  NoReader sink;
  CameraPoints sut(sink, *session);
  sut.note(kDepthCamera, images.all.back(), snapshot.time);
  EXPECT_TRUE(sut.write(*camera, snapshot.time));
  sut.note(kDepthCamera, images.all.front(), snapshot.time);
  EXPECT_FALSE(sut.write(*camera, snapshot.time));
}

}  // namespace
}  // namespace QV::ros2
