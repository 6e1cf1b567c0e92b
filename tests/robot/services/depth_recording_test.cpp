#include "robot/services/depth_recording.h"

#include <fstream>

#include <opencv2/imgcodecs.hpp>

#include "tests/support/temporary_folder.h"
#include "tests/support/vocabulary.h"

namespace QV::robot {
namespace {

using Depth = cv::Mat_<std::uint16_t>;

struct DepthRecordingTest : testing::Test {
  void save(const std::string& name, const cv::Mat& image) {
    ASSERT_TRUE(cv::imwrite(folder / name, image));
  }

  /** The frame at so many milliseconds, its pixels in a row. */
  static std::vector<int> frameAt(DepthRecording& sut, int ms) {
    Depth depth;
    sut(depth, ko::Clock::time_point(milliseconds(ms)));
    return std::vector<int>(depth.begin(), depth.end());
  }

  test::TemporaryFolder folder;
};

TEST_F(DepthRecordingTest, playsInTheOrderOfNamesAtItsRateAndAgain) {
  for (const int i : {3, 1, 2}) save("frame" + std::to_string(i) + ".png", (Depth(1, 1) << i));
  std::ofstream(folder / "notes.txt") << "not a frame";
  DepthRecording sut(folder.string(), 0.001, 10.0);
  EXPECT_EQ(sut.getFrameCount(), 3u);
  std::vector<int> played;
  for (const int ms : {5000, 5099, 5100, 5150, 5299, 5300, 5750}) {
    played.push_back(frameAt(sut, ms).at(0));
  }
  EXPECT_THAT(played, ElementsAre(1, 1, 2, 2, 3, 1, 2));
  // Time that was turned back starts it anew.
  EXPECT_THAT(frameAt(sut, 10), ElementsAre(1));
}

TEST_F(DepthRecordingTest, comesInMillimetres) {
  save("a.png", (Depth(1, 5) << 0, 1, 5000, 7504, 65535));
  DepthRecording fine(folder.string(), 0.0002, 10.0);
  EXPECT_THAT(frameAt(fine, 0), ElementsAre(0, 0, 1000, 1501, 13107));
  DepthRecording coarse(folder.string(), 0.01, 10.0);
  EXPECT_THAT(frameAt(coarse, 0), ElementsAre(0, 10, 50000, 65535, 65535));
}

TEST_F(DepthRecordingTest, aBadFileIsNamedAndTheOthersPlayOn) {
  const Depth noise(40, 40);
  cv::randu(noise, 0, 65536);
  save("a.png", noise);
  std::filesystem::resize_file(folder / "a.png", 600);
  save("b.png", cv::Mat(2, 2, CV_8UC1, cv::Scalar(9)));
  save("c.png", cv::Mat(2, 2, CV_16UC3, cv::Scalar(9, 9, 9)));
  std::ofstream(folder / "d.png");
  save("e.png", (Depth(1, 1) << 42));
  DepthRecording sut(folder.string(), 0.001, 10.0);
  const auto errorAt = [&](int ms) { return errorOf([&] { frameAt(sut, ms); }); };
  EXPECT_EQ(errorAt(0), folder / "a.png: not a readable PNG");
  EXPECT_EQ(errorAt(100), folder / "b.png: 16-bit grey expected, CV_8UC1 given");
  EXPECT_EQ(errorAt(200), folder / "c.png: 16-bit grey expected, CV_16UC3 given");
  EXPECT_EQ(errorAt(300), folder / "d.png: not a readable PNG");
  EXPECT_THAT(frameAt(sut, 400), ElementsAre(42));
}

TEST_F(DepthRecordingTest, refusesAnUnplayableFolder) {
  const auto errorFor = [&](double metresPerUnit, double framesPerSecond) {
    return errorOf([&] { DepthRecording(folder.string(), metresPerUnit, framesPerSecond); });
  };
  EXPECT_EQ(errorFor(0.001, 10.0), "DepthRecording: no PNG in " + folder.string());
  save("a.png", (Depth(1, 1) << 1));
  EXPECT_EQ(errorFor(0.0, 10.0),
            "DepthRecording: metres per unit above 0 expected, 0.000000 given");
  EXPECT_EQ(errorFor(NAN, 10.0), "DepthRecording: metres per unit above 0 expected, nan given");
  EXPECT_EQ(errorFor(0.001, -1.0),
            "DepthRecording: frames per second above 0 expected, -1.000000 given");
  EXPECT_THAT(errorOf([] { DepthRecording("/no/such/folder", 0.001, 10.0); }),
              testing::HasSubstr("/no/such/folder"));
}

}  // namespace
}  // namespace QV::robot
