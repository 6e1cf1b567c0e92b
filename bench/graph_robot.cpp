// Robots on a graph: what one costs that nobody listens to, what many cost each, and whether the
// images of ten arrive.

#include "ros2/link/graph_robot.h"

#include <atomic>
#include <chrono>
#include <ctime>
#include <malloc.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/timing.h"
#include "platform/ko/log.h"
#include "platform/ko/simulated_time.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/messages/sensor_msgs.h"
#include "session/open.h"
#include "tests/ros2/support/own_domain.h"

namespace QV {
namespace {

constexpr boost::chrono::milliseconds kStep{20};
constexpr int kStepsPerSecond = 50;

/** The CPU seconds of all threads. */
double processTime() {
  std::timespec time;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

std::unique_ptr<session::Session> openBusy() {
  auto session = session::openVirtual("porter");
  session->subscribe("bench", session->getManager().getFamilyNames());
  session->wander();
  return session;
}

double secondsOfDrive(session::Session& session, ros2::GraphRobot* robot, int seconds) {
  const double begin = processTime();
  for (int i = 0; i < kStepsPerSecond * seconds; ++i) {
    if (robot) {
      robot->obey();
      session.setDemand(robot->getDemand());
    }
    session.run(kStep);
    if (robot && i % 5 == 0 && robot->isWatched()) robot->show(session.look());
  }
  return processTime() - begin;
}

// The time of all threads counts, so that of DDS, too.
void unwatched(benchmark::State& state) {
  constexpr int kSeconds = 40;
  ros2::Graph graph(test::aloneOn());
  std::vector<double> own, peer;
  for (auto _ : state) {
    peer.push_back(secondsOfDrive(*openBusy(), nullptr, kSeconds));
    const auto session = openBusy();
    ros2::GraphRobot robot(graph, *session);
    own.push_back(secondsOfDrive(*session, &robot, kSeconds));
    state.SetIterationTime(own.back() / kSeconds);
  }
  state.counters["vs_without"] = bench::ratioOf(peer, own);
}
BENCHMARK(unwatched)->UseManualTime()->Iterations(15)->Unit(benchmark::kMillisecond);

/** What is allocated. Pages say too little of one robot after many: it lives in what they left. */
double megabytesInUse() {
  const auto info = mallinfo2();
  return 1e-6 * static_cast<double>(info.uordblks + info.hblkhd);
}

/** A graph, and robots on it whose first laser and odometry somebody listens to. */
class Fleet {
 public:
  void add(int count) {
    for (int i = 0; i < count; ++i) {
      session::OpenOptions options;
      options.time = session::TimeSource::clock;
      sessions.push_back(session::openVirtual("porter", options));
      sessions.back()->wander();
      ros2::GraphRobotOptions names;
      names.nameSpace = "/robot" + std::to_string(i);
      names.hasOwnFrames = true;
      robots.push_back(std::make_unique<ros2::GraphRobot>(graph, *sessions.back(), names));
      listen<ros2::sensor_msgs::LaserScan>(names.nameSpace + "/FrontLaser/scan");
      listen<ros2::nav_msgs::Odometry>(names.nameSpace + "/odom");
    }
  }

  double secondsOf(int steps) {
    const double begin = processTime();
    for (int i = 0; i < steps; ++i) {
      for (std::size_t k = 0; k < robots.size(); ++k) {
        robots[k]->obey();
        sessions[k]->setDemand(robots[k]->getDemand());
      }
      time.advance(kStep);
    }
    return processTime() - begin;
  }
  /** Runs until 60 messages per robot have arrived. */
  void settle() {
    while (heard < 60 * static_cast<int>(robots.size())) secondsOf(10);
  }

 private:
  template <typename Message>
  void listen(const std::string& topic) {
    subscriptions.push_back(
        tool->subscribe(topic, Message::getType(), {}, [this](auto&) { ++heard; }));
  }

  ko::SimulatedTime time;
  std::vector<std::unique_ptr<session::Session>> sessions;
  ros2::Graph graph{test::aloneOn()};
  ros2::Graph others{test::aloneOn()};
  const std::unique_ptr<ros2::GraphNode> tool = others.createNode("tool");
  std::atomic<int> heard{0};
  std::vector<std::unique_ptr<ros2::Subscription>> subscriptions;
  std::vector<std::unique_ptr<ros2::GraphRobot>> robots;
};

struct Cost {
  double milliseconds;
  double megabytes;
};

/** Measures the cost of one robot per simulated second. The memory of the graph is no robot's. */
Cost costOfEach(int count) {
  constexpr int kRobotSeconds = 80;
  const int seconds = kRobotSeconds / count;
  Fleet fleet;
  const double before = megabytesInUse();
  fleet.add(count);
  fleet.settle();
  const double used = fleet.secondsOf(seconds * kStepsPerSecond);
  return {1e3 * used / kRobotSeconds, (megabytesInUse() - before) / count};
}

// The first of all pays for what all have.
void twentyRobots(benchmark::State& state) {
  constexpr int kMany = 20;
  costOfEach(kMany);
  std::vector<double> alone, many, megabytesAlone, megabytesOfMany;
  for (auto _ : state) {
    const Cost one = costOfEach(1);
    const Cost each = costOfEach(kMany);
    alone.push_back(one.milliseconds);
    many.push_back(each.milliseconds);
    megabytesAlone.push_back(one.megabytes);
    megabytesOfMany.push_back(each.megabytes);
    state.SetIterationTime(1e-3 * each.milliseconds);
  }
  state.counters["vs_alone"] = bench::ratioOf(alone, many);
  state.counters["MB"] = bench::medianOf(megabytesOfMany);
  state.counters["MB_alone"] = bench::medianOf(megabytesAlone);
}
BENCHMARK(twentyRobots)->UseManualTime()->Iterations(9)->Unit(benchmark::kMillisecond);

/** With receive buffers of Linux's default, which are far smaller than the images. */
ros2::GraphOptions withSmallBuffers() {
  ros2::GraphOptions options = test::aloneOn();
  options.configuration =
      "<CycloneDDS><Domain><Internal><SocketReceiveBufferSize min=\"default\" max=\"208 kB\"/>"
      "</Internal></Domain></CycloneDDS>";
  return options;
}

/** A robot of its own on the graph, that shows what its camera sees. */
struct Camera {
  explicit Camera(int number)
      : publisher(graph.createNode("camera" + std::to_string(number))
                      ->publish("/robot" + std::to_string(number) + "/image",
                                ros2::sensor_msgs::Image::getType())) {}
  ros2::Graph graph{withSmallBuffers()};
  std::unique_ptr<ros2::Publisher> publisher;
};

// The benchmark runs in real time, because readers have to keep up with that.
void tenCameras(benchmark::State& state) {
  constexpr int kCameras = 10;
  constexpr int kSeconds = 5;
  ros2::sensor_msgs::Image image;
  image.width = 320;
  image.height = 240;
  image.step = 640;
  image.encoding = "16UC1";
  image.data.assign(640 * 240, 7);
  std::atomic<int> heard{0};
  ros2::Graph graph(withSmallBuffers());
  const auto node = graph.createNode("tool");
  std::vector<std::unique_ptr<Camera>> cameras;
  std::vector<std::unique_ptr<ros2::Subscription>> subscriptions;
  for (int i = 0; i < kCameras; ++i) {
    cameras.push_back(std::make_unique<Camera>(i));
    subscriptions.push_back(node->subscribe("/robot" + std::to_string(i) + "/image",
                                            ros2::sensor_msgs::Image::getType(), {},
                                            [&](auto&) { ++heard; }));
  }
  for (const auto& camera : cameras)
    while (camera->publisher->getReaderCount() == 0) std::this_thread::yield();
  int sent = 0;
  for (auto _ : state) {
    auto due = std::chrono::steady_clock::now();
    for (int i = 0; i < 10 * kSeconds; ++i) {
      for (const auto& camera : cameras) camera->publisher->write(image);
      sent += kCameras;
      std::this_thread::sleep_until(due += std::chrono::milliseconds(100));
    }
  }
  // Waits up to 5 s for retransmissions.
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  while (heard < sent && std::chrono::steady_clock::now() < end) std::this_thread::yield();
  state.counters["sent"] = sent;
  state.counters["lost"] = sent - heard;
}
BENCHMARK(tenCameras)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace QV

int main(int argc, char** argv) {
  ko::log::setLevel(ko::log::Level::error);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
