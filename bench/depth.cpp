/**
 * The cost of the depth camera on recorded frames (in the folder that QV_DATA names): labelling,
 * filtering (labelling, projection, grouping) and a whole cycle, from asking for the image to
 * publishing the records. Every row times its peers in turn with us, on the same frame, and counts
 * what our step takes from the heap. The sensor's log category is off: a pixel that is too far away
 * would be a line.
 */
#include <cmath>
#include <cstdlib>
#include <malloc.h>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <boost/make_shared.hpp>
#include <opencv2/imgproc.hpp>

#include "bench/timing.h"
#include "platform/ko/log.h"
#include "platform/ko/simulated_time.h"
#include "platform/vision/internal/component_labeler.h"
#include "platform/vision/qv_image.h"
#include "robot/services/video_device.h"
#include "sensor/perception/sensor_3d.h"
#include "tests/support/counted_heap.h"
#include "tests/support/depth_frames.h"

#ifdef QV_BENCH_PCL
#include <pcl/segmentation/euclidean_cluster_comparator.h>
#include <pcl/segmentation/organized_connected_component_segmentation.h>
#endif

namespace QV::bench {
namespace {

constexpr float kHorizontalFOV = 1.02f;
constexpr float kVerticalFOV = 0.79f;
constexpr int kWarmUps = 20;
/** A slow peer has its turn in one of so many rounds. */
constexpr std::size_t kRoundsPerSlowPeer = 4;

/** The depth camera without its task: the benchmark makes the steps. */
class Sut : public sensor::Sensor3D {
 public:
  explicit Sut(const boost::shared_ptr<QVBroker>& broker)
      : Sensor3D("Depth", "Asus", broker, Math::SensorFieldOfView2D(0.4f, 4.0f, 1.0f, 1)) {}

  void filter(QVImage& image) {
    scans.clear();
    xFilterScan(image, scans);
    xPublish(scans, Math::Transform(), ko::Clock::time_point());
  }

 private:
  std::vector<Points> scans;
};

/** A frame, and a robot whose depth camera shows it. */
struct Scene {
  explicit Scene(const cv::Mat_<std::uint16_t>& first) {
    show(first);
    const auto video = boost::make_shared<robot::VideoDevice>();
    const int modelCode = depth.cols == 640 ? 7 : 0;
    const auto source = [this](cv::Mat_<std::uint16_t>& frame, ko::Clock::time_point) {
      depth.copyTo(frame);
    };
    video->addCamera({kDepthCamera, "Depth", modelCode, kHorizontalFOV, kVerticalFOV, source});
    const auto motion = boost::make_shared<QVModule>("QVMotion");
    motion->bindMethod("_getSensorTransformAtTime", [](const std::string&, ko::Clock::time_point) {
      return Math::Transform().toVector();
    });
    broker->registerModule(video);
    broker->registerModule(motion);
    sut = boost::make_shared<Sut>(broker);
  }

  Scene(const Scene&) = delete;
  Scene& operator=(const Scene&) = delete;

  void show(const cv::Mat_<std::uint16_t>& next) {
    depth = next;
    valid = depth != 0;
  }

  QVImage image() const {
    return QVImage(depth.cols, depth.rows, kDepthColorSpace, 0, depth.data, depth.total() * 2);
  }

  cv::Mat_<std::uint16_t> depth;
  cv::Mat valid;
  boost::shared_ptr<QVBroker> broker = QVBroker::create();
  boost::shared_ptr<Sut> sut;
};

void labelWithOpenCV(const Scene& scene) {
  static cv::Mat labels;
  benchmark::DoNotOptimize(cv::connectedComponents(scene.valid, labels, 4, CV_32S));
}

/** The least that anybody does with an image. */
void copyImage(const Scene& scene) {
  static cv::Mat copy;
  scene.depth.copyTo(copy);
  benchmark::DoNotOptimize(copy.data);
}

#ifdef QV_BENCH_PCL
using Cloud = pcl::PointCloud<pcl::PointXYZ>;
using Labels = pcl::PointCloud<pcl::Label>;

Cloud::Ptr toCloud(const cv::Mat_<std::uint16_t>& depth) {
  const float xToZ = 2.0f * std::tan(kHorizontalFOV / 2.0f) / static_cast<float>(depth.cols);
  const float yToZ = 2.0f * std::tan(kVerticalFOV / 2.0f) / static_cast<float>(depth.rows);
  auto cloud = pcl::make_shared<Cloud>(depth.cols, depth.rows);
  cloud->is_dense = false;
  auto* point = cloud->points.data();
  for (int v = 0; v < depth.rows; ++v) {
    for (int u = 0; u < depth.cols; ++u, ++point) {
      const float d = depth(v, u) == 0 ? NAN : static_cast<float>(depth(v, u)) * 0.001f;
      *point = {d, static_cast<float>(depth.cols / 2 - u) * d * xToZ,
                static_cast<float>(depth.rows / 2 - v) * d * yToZ};
    }
  }
  return cloud;
}

/** Conversion, segmentation, and the points of each large component copied out. */
void segmentWithPCL(const Scene& scene) {
  const Cloud::Ptr cloud = toCloud(scene.depth);
  const auto comparator =
      pcl::make_shared<pcl::EuclideanClusterComparator<pcl::PointXYZ, pcl::Label>>();
  comparator->setInputCloud(cloud);
  comparator->setDistanceThreshold(0.1f, false);
  pcl::OrganizedConnectedComponentSegmentation<pcl::PointXYZ, pcl::Label> segmentation(comparator);
  segmentation.setInputCloud(cloud);
  Labels labels;
  std::vector<pcl::PointIndices> components;
  segmentation.segment(labels, components);
  std::vector<std::vector<Math::Position3D>> scans;
  for (const pcl::PointIndices& component : components) {
    if (component.indices.size() < cloud->size() / 100) continue;
    auto& points = scans.emplace_back();
    points.reserve(component.indices.size());
    for (const int i : component.indices) {
      const auto& point = (*cloud)[static_cast<std::size_t>(i)];
      points.emplace_back(point.x, point.y, point.z);
    }
  }
  benchmark::DoNotOptimize(scans.data());
}
#endif

/** The time of a peer for the same frame, as a multiple of ours. */
struct Peer {
  std::string counter;
  void (*run)(const Scene&);
  /** A slow one has its turn in one of so many rounds only. */
  std::size_t rounds = 1;
};

template <typename Run, typename Prepare>
void compare(benchmark::State& state, const Scene& scene, const std::vector<Peer>& peers, Run run,
             Prepare prepare) {
  std::size_t round = 0;
  std::vector<std::vector<double>> ratios(peers.size());
  double allocations = 0.0;
  double bytes = 0.0;
  const auto prepareAndRun = [&] {
    prepare();
    run();
  };
  // Warm-up: memory that is allocated once is not a cost per cycle.
  for (int i = 0; i < kWarmUps; ++i) prepareAndRun();
  for (auto _ : state) {
    // Everybody runs twice, the first time for the caches only.
    prepareAndRun();
    prepare();
    test::heap = {};
    const double seconds = secondsOf(run);
    allocations += test::heap.allocations;
    bytes += test::heap.bytes;
    state.SetIterationTime(seconds);
    for (std::size_t i = 0; i < peers.size(); ++i) {
      if (round % peers[i].rounds != 0) continue;
      const auto runPeer = [&] { peers[i].run(scene); };
      runPeer();
      ratios[i].push_back(secondsOf(runPeer) / seconds);
    }
    ++round;
  }
  for (std::size_t i = 0; i < peers.size(); ++i) {
    state.counters[peers[i].counter] = medianOf(ratios[i]);
  }
  const auto mean = benchmark::Counter::kAvgIterations;
  state.counters["allocations"] = benchmark::Counter(allocations, mean);
  state.counters["bytes"] = benchmark::Counter(bytes, mean);
}

template <typename Run>
void compare(benchmark::State& state, const Scene& scene, const std::vector<Peer>& peers, Run run) {
  compare(state, scene, peers, run, [] {});
}

void label(benchmark::State& state, const cv::Mat_<std::uint16_t>& depth) {
  const Scene scene(depth);
  vision::ComponentLabeler sut;
  cv::Mat_<int> labels;
  compare(state, scene, {{"vs_opencv_label", labelWithOpenCV}, {"vs_copy", copyImage}},
          [&] { benchmark::DoNotOptimize(sut.label(depth, labels, 100)); });
}

std::vector<Peer> peersOfTheWhole() {
  return {{"vs_opencv", labelWithOpenCV},
#ifdef QV_BENCH_PCL
          {"vs_pcl", segmentWithPCL, kRoundsPerSlowPeer},
#endif
          {"vs_copy", copyImage}};
}

void filter(benchmark::State& state, const cv::Mat_<std::uint16_t>& depth) {
  const Scene scene(depth);
  QVImage image = scene.image();
  compare(state, scene, peersOfTheWhole(), [&] { scene.sut->filter(image); });
}

void cycle(benchmark::State& state, const cv::Mat_<std::uint16_t>& depth) {
  ko::SimulatedTime time;
  const Scene scene(depth);
  scene.sut->subscribe("bench");
  compare(state, scene, peersOfTheWhole(), [&] { time.advance(boost::chrono::milliseconds(100)); });
}

/** A cycle where no frame is like the one before. */
void cycleInTurn(benchmark::State& state, const std::vector<cv::Mat_<std::uint16_t>>& frames) {
  ko::SimulatedTime time;
  Scene scene(frames.front());
  scene.sut->subscribe("bench");
  std::size_t count = 0;
  compare(
      state, scene, peersOfTheWhole(), [&] { time.advance(boost::chrono::milliseconds(100)); },
      [&] { scene.show(frames[++count % frames.size()]); });
}

void registerFrame(const std::string& size, const std::string& name,
                   const cv::Mat_<std::uint16_t>& depth) {
  using Row = void (*)(benchmark::State&, const cv::Mat_<std::uint16_t>&);
  for (const auto& [step, row] :
       {std::pair<std::string, Row>("label", label), {"filter", filter}, {"cycle", cycle}}) {
    benchmark::RegisterBenchmark(("depth/" + size + "/" + step + "/" + name).c_str(), row, depth)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
  }
}

void registerAll() {
  std::vector<cv::Mat_<std::uint16_t>> frames;
  for (const auto& frame : test::loadDepthFrames()) {
    cv::Mat_<std::uint16_t> half;
    cv::resize(frame.depth, half, {320, 240}, 0.0, 0.0, cv::INTER_NEAREST);
    registerFrame("640x480", frame.name, frame.depth);
    registerFrame("320x240", frame.name, half);
    frames.push_back(frame.depth);
  }
  if (frames.empty()) return;
  benchmark::RegisterBenchmark("depth/640x480/cycle/all in turn", cycleInTurn, frames)
      ->UseManualTime()
      ->Unit(benchmark::kMillisecond);
}

}  // namespace
}  // namespace QV::bench

int main(int argc, char** argv) {
  // Freed memory stays ours, or peers that take it anew for each frame would pay for its pages too.
  mallopt(M_MMAP_THRESHOLD, 32 << 20);
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  ko::log::setLevel("Navigation.Sensor3D", ko::log::Level::silent);
  cv::setNumThreads(1);
  QV::bench::registerAll();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
