#include "robot/services/video_device.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <latch>
#include <optional>
#include <thread>

#include <boost/make_shared.hpp>

#include "platform/ko/simulated_time.h"
#include "platform/middleware/qv_broker.h"
#include "platform/middleware/qv_video_device_proxy.h"
#include "platform/vision/qv_image.h"
#include "tests/support/log_capture.h"
#include "tests/support/vocabulary.h"

namespace QV::robot {
namespace {

constexpr int kCamera = 2;
constexpr int kQVGA = 8;
constexpr int kVGA = 12;
constexpr int kDepth = 17;

struct VideoDeviceTest : testing::Test {
  VideoDeviceTest() {
    broker->registerModule(device);
    device->addCamera(camera([this](cv::Mat_<std::uint16_t>& depth, ko::Clock::time_point) {
      depth = static_cast<std::uint16_t>(++captured);
    }));
    proxy = boost::make_shared<QVVideoDeviceProxy>(broker);
  }

  static Camera camera(const FrameSource& source) {
    return {kCamera, "DepthCamera", 7, 1.0f, 0.8f, source};
  }

  void replaceSource(const FrameSource& source) {
    device->removeCamera(kCamera);
    device->addCamera(camera(source));
  }

  std::string subscribe(int frameRate = 10, int resolution = kQVGA) {
    return proxy->subscribeCamera("client", kCamera, resolution, kDepth, frameRate);
  }

  /** The first pixel, by which the frames of this camera are counted. */
  int next(const std::string& handle) {
    const auto image = QVImage::fromQVValue(proxy->getImageRemote(handle));
    return image->getPixels()[0];
  }

  std::optional<ko::SimulatedTime> time{std::in_place};
  test::LogCapture log;
  boost::shared_ptr<QVBroker> broker = QVBroker::create();
  boost::shared_ptr<VideoDevice> device = boost::make_shared<VideoDevice>();
  boost::shared_ptr<QVVideoDeviceProxy> proxy;
  int captured = 0;
};

TEST_F(VideoDeviceTest, aFrameCarriesItsSizeAndTime) {
  time->advance(ko::Duration(1'234'567'891));
  const auto image = QVImage::fromQVValue(proxy->getImageRemote(subscribe(10, kVGA)));
  ASSERT_TRUE(image);
  EXPECT_EQ(std::pair(image->getWidth(), image->getHeight()), std::pair(640, 480));
  EXPECT_EQ(image->getColorSpace(), kDepth);
  EXPECT_EQ(image->getTimestamp(), 1'234'567);
}

TEST_F(VideoDeviceTest, eachClientGetsFramesAtItsOwnRateOrLess) {
  const std::string fast = subscribe(100);
  const std::string slow = subscribe(10);
  EXPECT_EQ(next(fast), 1);
  EXPECT_EQ(next(slow), 2);
  time->advance(milliseconds(9));
  EXPECT_EQ(next(fast), 1);
  time->advance(milliseconds(1));
  EXPECT_EQ(next(fast), 3);
  time->advance(milliseconds(89));
  EXPECT_EQ(next(slow), 2);
  time->advance(milliseconds(1));
  EXPECT_EQ(next(slow), 4);
}

TEST_F(VideoDeviceTest, anImageThatIsStillHeldIsTakenBackAndLoggedOnce) {
  const std::string handle = subscribe();
  for (int i = 1; i < 4; ++i) {
    EXPECT_EQ(next(handle), i);
    proxy->releaseImage(handle);
    time->advance(milliseconds(100));
  }
  EXPECT_THAT(log.lines(), ElementsAre());
  for (int i = 4; i < 8; ++i) {
    EXPECT_EQ(next(handle), i);
    time->advance(milliseconds(100));
  }
  EXPECT_THAT(
      log.lines(),
      ElementsAre("warning QVVideoDevice.getImageRemote: client_1 asks for an image while it "
                  "holds one, which is taken back"));
}

TEST_F(VideoDeviceTest, anImageOutlivesItsReleaseItsClientAndItsDevice) {
  const std::string handle = subscribe();
  const QVValue image = proxy->getImageRemote(handle);
  proxy->releaseImage(handle);
  time->advance(milliseconds(100));
  next(handle);
  proxy->unsubscribe(handle);
  proxy.reset();
  device.reset();
  broker.reset();
  EXPECT_EQ(QVImage::fromQVValue(image)->getPixels()[0], 1);
}

TEST_F(VideoDeviceTest, handlesAreGivenOnceAndListedUntilTheyAreGivenBack) {
  EXPECT_EQ(subscribe(), "client_1");
  EXPECT_EQ(subscribe(), "client_2");
  proxy->unsubscribe("client_1");
  EXPECT_EQ(proxy->subscribeCamera("client_1", kCamera, kQVGA, kDepth, 10), "client_1_3");
  EXPECT_EQ(subscribe(), "client_4");
  proxy->unsubscribe("client_1");  // Again: nobody else's.
  EXPECT_THAT(device->getHandles(), ElementsAre("client_1_3", "client_2", "client_4"));
  EXPECT_EQ(proxy->call<std::vector<std::string>>("getHandles"), device->getHandles());
  for (const char* unknown :
       {"client_5", "client_0", "client_-1", "client_1x", "client_99999999999", "client_", "",
        "client_+2", "client_02", "other_2", "2", "_2", "client_1_1"}) {
    EXPECT_NE(errorOf([&] { proxy->unsubscribe(unknown); }), "") << unknown;
  }
}

TEST_F(VideoDeviceTest, samplesAFrameOfAnotherSize) {
  cv::Mat_<std::uint16_t> large(480, 640);
  for (int y = 0; y < large.rows; ++y) {
    for (int x = 0; x < large.cols; ++x) large(y, x) = static_cast<std::uint16_t>(100 * y + x);
  }
  replaceSource([&](cv::Mat_<std::uint16_t>& depth, ko::Clock::time_point) { depth = large; });
  const auto image = QVImage::fromQVValue(proxy->getImageRemote(subscribe()));
  const auto* pixels = reinterpret_cast<const std::uint16_t*>(image->getPixels());
  ASSERT_EQ(image->getSize(), 320u * 240u * 2u);
  EXPECT_EQ(pixels[0], large(0, 0));
  EXPECT_EQ(pixels[320 * 100 + 50], large(200, 100));
  EXPECT_EQ(pixels[320 * 240 - 1], large(478, 638));
}

TEST_F(VideoDeviceTest, aSourceMayReuseOneImageForAllClients) {
  cv::Mat_<std::uint16_t> shared(480, 640);
  std::uint16_t count = 0;
  replaceSource([&](cv::Mat_<std::uint16_t>& depth, ko::Clock::time_point) {
    shared = ++count;
    depth = shared;
  });
  std::latch go(2);
  std::atomic<int> torn{0};
  const auto take = [&] {
    go.arrive_and_wait();
    for (int i = 0; i < 100; ++i) {
      const auto image = QVImage::fromQVValue(proxy->getImageRemote(subscribe()));
      const auto* pixels = reinterpret_cast<const std::uint16_t*>(image->getPixels());
      if (std::adjacent_find(pixels, pixels + 320 * 240, std::not_equal_to<>()) !=
          pixels + 320 * 240) {
        ++torn;
      }
    }
  };
  std::thread other(take);
  take();
  other.join();
  EXPECT_EQ(torn, 0);
}

TEST_F(VideoDeviceTest, afterTheClockGoesBackClientsStillGetNewImages) {
  time->advance(boost::chrono::hours(1));
  const std::string handle = subscribe();
  EXPECT_EQ(next(handle), 1);
  time.reset();
  time.emplace();
  EXPECT_EQ(next(handle), 2);
}

TEST_F(VideoDeviceTest, aFailureReachesTheClientWhichKeepsItsHandle) {
  const std::string handle = subscribe();
  next(handle);
  time->advance(milliseconds(100));
  device->removeCamera(kCamera);
  EXPECT_EQ(errorOf([&] { next(handle); }), "QVVideoDevice::getImageRemote: no camera 2");
  device->addCamera(camera([](cv::Mat_<std::uint16_t>&, ko::Clock::time_point) {
    throw std::runtime_error("lens cap on");
  }));
  EXPECT_EQ(errorOf([&] { next(handle); }), "QVVideoDevice::getImageRemote: lens cap on");
  replaceSource([](cv::Mat_<std::uint16_t>& depth, ko::Clock::time_point) { depth = 77; });
  EXPECT_EQ(next(handle), 77);
  device->removeCamera(kCamera);
  proxy->unsubscribe(handle);
  EXPECT_THAT(device->getHandles(), ElementsAre());
}

TEST_F(VideoDeviceTest, refusesWrongArguments) {
  const auto errorFor = [&](const std::string& name, int index, int resolution, int colorSpace,
                            int rate) {
    return errorOf([&] { proxy->subscribeCamera(name, index, resolution, colorSpace, rate); });
  };
  const std::string prefix = "QVVideoDevice::subscribeCamera: ";
  EXPECT_EQ(errorFor("c", 0, 8, 17, 10), prefix + "no camera 0");
  EXPECT_EQ(errorFor("c", 2, 7, 17, 10),
            prefix + "setSizeFromResolution: unknown resolution code 7, 8 or 12 expected");
  EXPECT_EQ(errorFor("c", 2, 8, 11, 10), prefix + "color space 17 expected, 11 given");
  EXPECT_EQ(errorFor("c", 2, 8, 17, 0), prefix + "a frame rate above 0 expected, 0 given");
  EXPECT_EQ(errorFor("", 2, 8, 17, 10), prefix + "a client name expected, none given");
  EXPECT_THAT(device->getHandles(), ElementsAre());
  for (const char* method : {"getImageRemote", "releaseImage", "unsubscribe"}) {
    EXPECT_EQ(errorOf([&] { proxy->callVoid(method, "nobody"); }),
              std::string("QVVideoDevice::") + method + ": no client \"nobody\"");
  }
  EXPECT_EQ(errorOf([&] { device->addCamera(camera({})); }), "VideoDevice: camera 2 has no source");
  EXPECT_EQ(errorOf([&] { replaceSource({}); }), "VideoDevice: camera 2 has no source");
  EXPECT_EQ(errorOf([&] { device->removeCamera(kCamera); }), "VideoDevice: no camera 2");
}

TEST_F(VideoDeviceTest, aClientMayLeaveWhileItsFrameIsTaken) {
  std::latch capturing(1);
  std::latch left(1);
  replaceSource([&](cv::Mat_<std::uint16_t>&, ko::Clock::time_point) {
    capturing.count_down();
    left.wait();
  });
  const std::string handle = subscribe();
  std::string error;
  std::thread asking([&] { error = errorOf([&] { next(handle); }); });
  capturing.wait();
  proxy->unsubscribe(handle);
  left.count_down();
  asking.join();
  EXPECT_EQ(error, "QVVideoDevice::getImageRemote: no client \"client_1\"");
  EXPECT_THAT(device->getHandles(), ElementsAre());
}

}  // namespace
}  // namespace QV::robot
