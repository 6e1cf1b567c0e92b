// Messages on a graph: from a measurement to a reader's callback, beside the bare engine with as
// many bytes, both by turns.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <dds/dds.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/timing.h"
#include "ros2/graph/graph.h"
#include "ros2/graph/internal/domain_settings.h"
#include "ros2/messages/sensor_msgs.h"
#include "tests/ros2/support/own_domain.h"

namespace QV {
namespace {

using Clock = std::chrono::steady_clock;

/** A number that a callback raises and this thread waits for. */
class Arrivals {
 public:
  void note() { ++count; }
  /** The bytes must get through: none is sent before the last has come. */
  void await(std::size_t expected) const {
    while (count < expected) {
    }
  }

 private:
  std::atomic<std::size_t> count{0};
};

template <typename Send>
double microsecondsOf(const Send& send, const Arrivals& arrivals, std::size_t expected) {
  const auto begin = Clock::now();
  send();
  arrivals.await(expected);
  return std::chrono::duration<double, std::micro>(Clock::now() - begin).count();
}

/** Ours: what a driver measured, until it can be read. */
template <typename Message>
class OwnWay {
 public:
  explicit OwnWay(Message message) : message(std::move(message)) {
    std::atomic<std::size_t> readers{0};
    publisher =
        from->publish("way", Message::getType(), {}, [&](std::size_t now) { readers = now; });
    subscription = to->subscribe("way", Message::getType(), {}, [this](auto&) { arrivals.note(); });
    while (readers == 0) {
    }
    send();
  }
  double send() {
    return microsecondsOf([&] { publisher->write(message); }, arrivals, ++sent);
  }

 private:
  const Message message;
  Arrivals arrivals;
  std::size_t sent = 0;
  ros2::Graph sending{test::aloneOn()};
  ros2::Graph receiving{test::aloneOn()};
  const std::unique_ptr<ros2::GraphNode> from = sending.createNode("from");
  const std::unique_ptr<ros2::GraphNode> to = receiving.createNode("to");
  std::unique_ptr<ros2::Publisher> publisher;
  std::unique_ptr<ros2::Subscription> subscription;
};

struct Blob {
  dds_sequence_t data;
};

const dds_topic_descriptor_t& blobType() {
  static const std::uint32_t operations[] = {
      std::uint32_t{DDS_OP_ADR} | DDS_OP_TYPE_SEQ | DDS_OP_SUBTYPE_1BY, offsetof(Blob, data),
      DDS_OP_RTS};
  static const dds_topic_descriptor_t type = {
      sizeof(Blob), alignof(Blob), 0, 0, "Blob", nullptr, 2, operations, "", {}, {}, 0};
  return type;
}

/** The engine alone, with as many bytes. */
class BareWay {
 public:
  explicit BareWay(std::size_t size) : bytes(size, 7) {
    const std::string settings = ros2::settingsOf(test::aloneOn());
    for (dds_domainid_t id : {500u, 501u}) {
      domains.push_back(dds_create_domain(id, settings.c_str()));
      participants.push_back(dds_create_participant(id, nullptr, nullptr));
      topics.push_back(
          dds_create_topic(participants.back(), &blobType(), "blob", nullptr, nullptr));
    }
    dds_qos_t* const qos = dds_create_qos();
    dds_qset_reliability(qos, DDS_RELIABILITY_RELIABLE, DDS_MSECS(100));
    dds_qset_history(qos, DDS_HISTORY_KEEP_LAST, 10);
    dds_listener_t* const listener = dds_create_listener(this);
    dds_lset_data_available(listener, onData);
    reader = dds_create_reader(participants[1], topics[1], qos, listener);
    writer = dds_create_writer(participants[0], topics[0], qos, nullptr);
    dds_delete_listener(listener);
    dds_delete_qos(qos);
    dds_publication_matched_status_t status{};
    while (status.current_count == 0) dds_get_publication_matched_status(writer, &status);
    send();
  }
  ~BareWay() {
    for (const dds_entity_t domain : domains) dds_delete(domain);
  }
  double send() {
    Blob blob{};
    blob.data._buffer = bytes.data();
    blob.data._length = blob.data._maximum = static_cast<std::uint32_t>(bytes.size());
    return microsecondsOf([&] { dds_write(writer, &blob); }, arrivals, ++sent);
  }

 private:
  static void onData(dds_entity_t reader, void* self) {
    void* samples[16] = {};
    dds_sample_info_t infos[16];
    const auto count = dds_take(reader, samples, infos, 16, 16);
    for (int i = 0; i < count; ++i)
      if (infos[i].valid_data) static_cast<BareWay*>(self)->arrivals.note();
    if (count > 0) dds_return_loan(reader, samples, count);
  }

  std::vector<std::uint8_t> bytes;
  Arrivals arrivals;
  std::size_t sent = 0;
  std::vector<dds_entity_t> domains, participants, topics;
  dds_entity_t reader = 0;
  dds_entity_t writer = 0;
};

double lateOf(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() * 99 / 100];
}

template <typename Message>
void way(benchmark::State& state, const Message& message) {
  const std::size_t size = ros2::toCdr(message).size();
  OwnWay<Message> own(message);
  BareWay bare(size - 8);
  std::vector<double> ours, theirs;
  for (auto _ : state) {
    ours.push_back(own.send());
    theirs.push_back(bare.send());
  }
  state.counters["bytes"] = static_cast<double>(size);
  state.counters["us"] = bench::medianOf(ours);
  state.counters["us_99"] = lateOf(ours);
  state.counters["vs_bare"] = bench::medianOf(theirs) / bench::medianOf(ours);
  state.counters["vs_bare_99"] = lateOf(theirs) / lateOf(ours);
}

void scan(benchmark::State& state) {
  ros2::sensor_msgs::LaserScan message;
  message.ranges.assign(360, 2.5f);
  way(state, message);
}

void range(benchmark::State& state) {
  way(state, ros2::sensor_msgs::Range());
}

void depthImage(benchmark::State& state) {
  ros2::sensor_msgs::Image message;
  message.width = 320;
  message.height = 240;
  message.step = 640;
  message.encoding = "16UC1";
  message.data.assign(640 * 240, 7);
  way(state, message);
}

void points(benchmark::State& state) {
  ros2::sensor_msgs::PointCloud2 message;
  message.width = 5000;
  message.height = 1;
  message.point_step = 12;
  message.row_step = 60'000;
  message.data.assign(60'000, 7);
  way(state, message);
}

constexpr int kRounds = 3000;

BENCHMARK(scan)->Iterations(kRounds);
BENCHMARK(range)->Iterations(kRounds);
BENCHMARK(depthImage)->Iterations(kRounds);
BENCHMARK(points)->Iterations(kRounds);

}  // namespace
}  // namespace QV

BENCHMARK_MAIN();
