// Recordings: writing and reading them, beside a plain write and read of the same bytes.

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <malloc.h>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/timing.h"
#include "outlets/files/record_file.h"
#include "ros2/bag/bag_reader.h"
#include "ros2/messages/sensor_msgs.h"
#include "ros2/recording/session_recorder.h"
#include "session/open.h"

namespace QV {
namespace {

/** Like chunks, no whole number of pages. */
constexpr std::size_t kPiece = 250'000;
constexpr std::size_t kBytes = std::size_t{64} << 20;

class Folder {
 public:
  Folder() : name((std::filesystem::temp_directory_path() / "qv_bench_XXXXXX").string()) {
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
  }
  ~Folder() { std::filesystem::remove_all(name); }
  std::string operator/(const char* file) const { return name + "/" + file; }

 private:
  std::string name;
};

/** Messages of each topic, one of each, in CDR. */
struct Load {
  std::vector<ros2::BagTopic> topics;
  std::vector<ros2::Bytes> messages;
};

Load scansOf(std::size_t beams) {
  ros2::sensor_msgs::LaserScan scan;
  for (std::size_t i = 0; i < beams; ++i)
    scan.ranges.push_back(0.001f * static_cast<float>(i * i % 9000));
  return {{ros2::makeBagTopic("/scan", scan.getType())}, {ros2::toCdr(scan)}};
}

Load imagesOf(std::uint32_t width, std::uint32_t height) {
  ros2::sensor_msgs::Image image;
  image.encoding = "32FC1";
  image.width = width;
  image.height = height;
  image.step = 4 * width;
  for (std::size_t i = 0; i < std::size_t{image.step} * height; ++i)
    image.data.push_back(static_cast<std::uint8_t>(i * i / 7));
  return {{ros2::makeBagTopic("/depth", image.getType())}, {ros2::toCdr(image)}};
}

/** The load of a robot: many small messages and some large. */
Load robotOf(std::size_t scans) {
  Load load = scansOf(360);
  const Load images = imagesOf(320, 240);
  load.topics.insert(load.topics.end(), images.topics.begin(), images.topics.end());
  load.messages.resize(scans, load.messages.front());
  load.messages.push_back(images.messages.front());
  return load;
}

void record(const std::string& path, const Load& load) {
  ros2::BagWriter writer(path, {ros2::Compression::none});
  for (const auto& topic : load.topics) writer.addTopic(topic);
  std::uint64_t time = 0;
  for (std::size_t bytes = 0; bytes < kBytes;) {
    for (const auto& message : load.messages) {
      const auto topic = &message == &load.messages.back() ? load.topics.size() - 1 : 0;
      writer.write(static_cast<std::uint16_t>(topic), time, time, message);
      time += 1'000'000;
      bytes += message.size();
    }
  }
  writer.close();
}

ros2::Bytes readPlainly(const std::string& path) {
  ros2::Bytes bytes(std::filesystem::file_size(path));
  const int file = ::open(path.c_str(), O_RDONLY);
  for (std::size_t place = 0; place < bytes.size();) {
    const ssize_t count =
        ::read(file, bytes.data() + place, std::min(kPiece, bytes.size() - place));
    if (count <= 0) throw std::runtime_error(path + " can't be read");
    place += static_cast<std::size_t>(count);
  }
  ::close(file);
  return bytes;
}

/** Reads through one buffer, as a reader does that goes on to the next piece. */
void skimPlainly(const std::string& path) {
  static ros2::Bytes buffer(kPiece);
  const int file = ::open(path.c_str(), O_RDONLY);
  while (::read(file, buffer.data(), buffer.size()) > 0) benchmark::DoNotOptimize(buffer.data());
  ::close(file);
}

void writePlainly(const std::string& path, const ros2::Bytes& bytes) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT, 0666);
  for (std::size_t place = 0; place < bytes.size(); place += kPiece) {
    const std::size_t size = std::min(kPiece, bytes.size() - place);
    if (::write(file, bytes.data() + place, size) != static_cast<ssize_t>(size))
      throw std::runtime_error(path + " can't be written");
  }
  ::close(file);
}

std::uint64_t play(const std::string& path) {
  ros2::BagReader reader(path);
  std::uint64_t bytes = 0;
  while (const auto message = reader.next()) bytes += message->data.size();
  return bytes;
}

Load loadOf(int number) {
  return number == 0 ? scansOf(360) : number == 1 ? imagesOf(320, 240) : robotOf(20);
}

void setRatio(benchmark::State& state, const char* name, const std::vector<double>& peer,
              const std::vector<double>& own, double bytes) {
  state.counters[name] = bench::ratioOf(peer, own);
  state.counters["MB_per_s"] = bytes / bench::medianOf(own) * 1e-6;
}

// Both by turns, each to a file of its own that was not there.
void write(benchmark::State& state) {
  const Folder folder;
  const Load load = loadOf(static_cast<int>(state.range(0)));
  record(folder / "whole", load);
  const ros2::Bytes bytes = readPlainly(folder / "whole");
  std::vector<double> own, peer;
  for (auto _ : state) {
    std::filesystem::remove(folder / "own");
    own.push_back(bench::secondsOf([&] { record(folder / "own", load); }));
    std::filesystem::remove(folder / "peer");
    peer.push_back(bench::secondsOf([&] { writePlainly(folder / "peer", bytes); }));
    state.SetIterationTime(own.back());
  }
  setRatio(state, "vs_write", peer, own, static_cast<double>(kBytes));
}

void read(benchmark::State& state) {
  const Folder folder;
  record(folder / "whole", loadOf(static_cast<int>(state.range(0))));
  std::vector<double> own, peer;
  for (auto _ : state) {
    own.push_back(bench::secondsOf([&] { benchmark::DoNotOptimize(play(folder / "whole")); }));
    peer.push_back(bench::secondsOf([&] { skimPlainly(folder / "whole"); }));
    state.SetIterationTime(own.back());
  }
  setRatio(state, "vs_read", peer, own, static_cast<double>(kBytes));
}

// Scans of 360 beams, depth images, and both.
BENCHMARK(write)->DenseRange(0, 2)->ArgName("load")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(read)->DenseRange(0, 2)->ArgName("load")->UseManualTime()->Unit(benchmark::kMillisecond);

/** The CPU seconds of all threads. */
double processTime() {
  std::timespec time;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/** Drives porter about with all its sensors, and looks ten times a second; to nobody or somebody.
 */
struct Drive {
  explicit Drive(int seconds) : seconds(seconds) {
    session->subscribe("bench", session->getManager().getFamilyNames());
    session->wander();
  }
  void run(outlets::Outlet* outlet) const {
    for (int i = 0; i < 10 * seconds; ++i) {
      session->run(boost::chrono::milliseconds(100));
      const session::Snapshot snapshot = session->look();
      if (outlet) outlet->show(snapshot);
    }
    if (outlet) outlet->finish();
  }
  const int seconds;
  const std::unique_ptr<session::Session> session = session::openVirtual("porter");
};

// A second thread packs and writes: `vs_unrecorded` is what the session's own thread takes, and
// `all_vs_unrecorded` what both do together.
void recordSecond(benchmark::State& state) {
  constexpr int kSeconds = 10;
  const Folder folder;
  std::vector<double> own, all, peer, allPeer;
  for (auto _ : state) {
    {
      const Drive drive(kSeconds);
      const double begin = processTime();
      peer.push_back(bench::secondsOf([&] { drive.run(nullptr); }));
      allPeer.push_back(processTime() - begin);
    }
    const Drive drive(kSeconds);
    ros2::SessionRecorder recorder(folder / "run.mcap", *drive.session);
    const double begin = processTime();
    own.push_back(bench::secondsOf([&] { drive.run(&recorder); }));
    all.push_back(processTime() - begin);
    state.SetIterationTime(own.back() / kSeconds);
  }
  state.counters["vs_unrecorded"] = bench::ratioOf(peer, own);
  state.counters["all_vs_unrecorded"] = bench::ratioOf(allPeer, all);
}
BENCHMARK(recordSecond)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

// The size of a minute on the disk, compared with the same minute as lines of JSON.
void recordMinute(benchmark::State& state) {
  constexpr int kSeconds = 60;
  const Folder folder;
  for (auto _ : state) {
    {
      const Drive drive(kSeconds);
      ros2::SessionRecorder recorder(folder / "run.mcap", *drive.session);
      state.SetIterationTime(bench::secondsOf([&] { drive.run(&recorder); }));
    }
    const Drive drive(kSeconds);
    outlets::RecordFile json(folder / "run.jsonl");
    drive.run(&json);
  }
  const auto size = [&](const char* name) {
    return static_cast<double>(std::filesystem::file_size(folder / name));
  };
  state.counters["vs_json"] = size("run.jsonl") / size("run.mcap");
  state.counters["MB"] = 1e-6 * size("run.mcap");
}
BENCHMARK(recordMinute)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);

// A message alone: to bytes and back.
void encodeScan(benchmark::State& state) {
  ros2::sensor_msgs::LaserScan scan;
  scan.ranges.resize(360);
  ros2::Bytes cdr;
  for (auto _ : state) {
    scan.getType().encode(&scan, cdr);
    benchmark::DoNotOptimize(cdr.data());
  }
}
BENCHMARK(encodeScan);

void decodeScan(benchmark::State& state) {
  ros2::sensor_msgs::LaserScan scan;
  scan.ranges.resize(360);
  const ros2::Bytes cdr = ros2::toCdr(scan);
  for (auto _ : state) {
    scan.getType().decode(cdr, &scan);
    benchmark::DoNotOptimize(scan.ranges.data());
  }
}
BENCHMARK(decodeScan);

}  // namespace
}  // namespace QV

int main(int argc, char** argv) {
  // Freed memory stays ours, or by turns one of both runs would pay for its pages anew.
  mallopt(M_MMAP_THRESHOLD, 32 << 20);
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
