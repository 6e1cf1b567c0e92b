// Another maker's participant of a graph: prints what it reads, and drives a robot.
//   ros2_peer DOMAIN FORWARD TURN (TOPIC TYPE KEPT)...
// TOPIC and TYPE are those of the wire, KEPT is 1 for one that keeps its last message. Prints
// "got TOPIC DIGEST", and "seen TOPIC BYTES" with the size of the user data of each endpoint.
//   ros2_peer DOMAIN
// publishes one message of each topic that a robot or a tool does, again and again.

#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fastdds/dds/domain/DomainParticipant.hpp>
#include <fastdds/dds/domain/DomainParticipantFactory.hpp>
#include <fastdds/dds/domain/DomainParticipantListener.hpp>
#include <fastdds/dds/publisher/DataWriter.hpp>
#include <fastdds/dds/publisher/Publisher.hpp>
#include <fastdds/dds/subscriber/DataReader.hpp>
#include <fastdds/dds/subscriber/DataReaderListener.hpp>
#include <fastdds/dds/subscriber/SampleInfo.hpp>
#include <fastdds/dds/subscriber/Subscriber.hpp>
#include <fastdds/dds/topic/TopicDataType.hpp>
#include <fastdds/rtps/builtin/data/ReaderProxyData.h>
#include <fastdds/rtps/builtin/data/WriterProxyData.h>
#include <fastdds/rtps/reader/ReaderDiscoveryInfo.h>
#include <fastdds/rtps/writer/WriterDiscoveryInfo.h>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/ros2/peer/digest.h"
#include "tests/ros2/peer/program/inputs.h"

namespace {

namespace fast = eprosima::fastdds::dds;
namespace rtps = eprosima::fastrtps::rtps;
using Bytes = std::vector<std::uint8_t>;

void print(const std::string& line) {
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  std::puts(line.c_str());
  std::fflush(stdout);
}

/** Messages as they stand on the wire. */
class RawType : public fast::TopicDataType {
 public:
  explicit RawType(const std::string& name) {
    setName(name.c_str());
    m_typeSize = 4096;
    auto_fill_type_object(false);
    auto_fill_type_information(false);
  }
  bool serialize(void* data, rtps::SerializedPayload_t* payload) override {
    const Bytes& bytes = *static_cast<Bytes*>(data);
    std::copy(bytes.begin(), bytes.end(), payload->data);
    payload->length = static_cast<std::uint32_t>(bytes.size());
    payload->encapsulation = CDR_LE;
    return true;
  }
  bool deserialize(rtps::SerializedPayload_t* payload, void* data) override {
    static_cast<Bytes*>(data)->assign(payload->data, payload->data + payload->length);
    return true;
  }
  std::function<std::uint32_t()> getSerializedSizeProvider(void* data) override {
    return [data] { return static_cast<std::uint32_t>(static_cast<Bytes*>(data)->size()); };
  }
  void* createData() override { return new Bytes; }
  void deleteData(void* data) override { delete static_cast<Bytes*>(data); }
  bool getKey(void*, rtps::InstanceHandle_t*, bool) override { return false; }
};

struct Discovery : fast::DomainParticipantListener {
  template <typename Proxy>
  static void tell(const fast::DomainParticipant& self, const Proxy& proxy) {
    // DDS reports the program's own endpoints, too.
    if (proxy.guid().guidPrefix == self.guid().guidPrefix) return;
    print("seen " + proxy.topicName().to_string() + " " +
          std::to_string(proxy.m_qos.m_userData.size()));
  }
  void on_publisher_discovery(fast::DomainParticipant* self,
                              rtps::WriterDiscoveryInfo&& info) override {
    if (info.status == rtps::WriterDiscoveryInfo::DISCOVERED_WRITER) tell(*self, info.info);
  }
  void on_subscriber_discovery(fast::DomainParticipant* self,
                               rtps::ReaderDiscoveryInfo&& info) override {
    if (info.status == rtps::ReaderDiscoveryInfo::DISCOVERED_READER) tell(*self, info.info);
  }
};

struct Reading : fast::DataReaderListener {
  explicit Reading(const std::string& topic) : topic(topic) {}
  void on_data_available(fast::DataReader* reader) override {
    Bytes bytes;
    fast::SampleInfo info;
    while (reader->take_next_sample(&bytes, &info) == ReturnCode_t::RETCODE_OK) {
      if (info.valid_data)
        print("got " + topic + " " +
              std::to_string(QV::test::digestOf(bytes.data(), bytes.size())));
    }
  }
  const std::string topic;
};

class Peer {
 public:
  explicit Peer(int domain)
      : participant(fast::DomainParticipantFactory::get_instance()->create_participant(
            static_cast<std::uint32_t>(domain), fast::PARTICIPANT_QOS_DEFAULT, &discovery,
            fast::StatusMask::none())),
        subscriber(participant->create_subscriber(fast::SUBSCRIBER_QOS_DEFAULT)),
        publisher(participant->create_publisher(fast::PUBLISHER_QOS_DEFAULT)) {}

  void read(const std::string& topic, const std::string& type, bool isKept) {
    fast::DataReaderQos qos;
    qos.reliability().kind = fast::RELIABLE_RELIABILITY_QOS;
    qos.durability().kind =
        isKept ? fast::TRANSIENT_LOCAL_DURABILITY_QOS : fast::VOLATILE_DURABILITY_QOS;
    qos.history().depth = 100;
    qos.endpoint().history_memory_policy = rtps::DYNAMIC_RESERVE_MEMORY_MODE;
    readings.push_back(std::make_unique<Reading>(topic));
    subscriber->create_datareader(xTopic(topic, type), qos, readings.back().get());
  }

  fast::DataWriter* write(const std::string& topic, const std::string& type, bool isKept = false) {
    fast::DataWriterQos qos;
    qos.reliability().kind = fast::RELIABLE_RELIABILITY_QOS;
    qos.durability().kind =
        isKept ? fast::TRANSIENT_LOCAL_DURABILITY_QOS : fast::VOLATILE_DURABILITY_QOS;
    return publisher->create_datawriter(xTopic(topic, type), qos);
  }

 private:
  fast::Topic* xTopic(const std::string& topic, const std::string& type) {
    fast::TypeSupport(new RawType(type)).register_type(participant);
    return participant->create_topic(topic, type, fast::TOPIC_QOS_DEFAULT);
  }

  Discovery discovery;
  std::vector<std::unique_ptr<Reading>> readings;
  fast::DomainParticipant* const participant;
  fast::Subscriber* const subscriber;
  fast::Publisher* const publisher;
};

constexpr std::chrono::milliseconds kPeriod{50};

/** Set by SIGUSR1, which a reader that drives waits for. */
volatile std::sig_atomic_t writes = 0;

// The test that started the program ends it.
[[noreturn]] void writeOn(const std::vector<std::pair<fast::DataWriter*, Bytes>>& messages) {
  print("ready");
  while (true) {
    for (auto [writer, bytes] : messages)
      if (writes != 0) writer->write(&bytes);
    std::this_thread::sleep_for(kPeriod);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 && argc < 4) return 2;
  std::vector<std::pair<fast::DataWriter*, Bytes>> messages;
  if (argc == 2) {
    // Two types of one topic are two topics to this engine, which one participant can't have.
    std::vector<std::unique_ptr<Peer>> peers;
    peers.push_back(std::make_unique<Peer>(std::atoi(argv[1])));
    for (const auto& input : QV::test::allInputs()) {
      const bool isStamped = input.type.find("TwistStamped") != std::string::npos;
      if (isStamped) peers.push_back(std::make_unique<Peer>(std::atoi(argv[1])));
      Peer& peer = isStamped ? *peers.back() : *peers.front();
      messages.emplace_back(peer.write(input.topic, input.type, input.isKept), input.cdr);
    }
    writes = 1;
    writeOn(messages);
  }
  std::signal(SIGUSR1, [](int) { writes = 1; });
  Peer peer(std::atoi(argv[1]));
  for (int i = 4; i + 2 < argc; i += 3) peer.read(argv[i], argv[i + 1], argv[i + 2][0] == '1');
  messages.emplace_back(
      peer.write("rt/cmd_vel", "geometry_msgs::msg::dds_::Twist_"),
      QV::test::encoded(std::atof(argv[2]), 0.0, 0.0, 0.0, 0.0, std::atof(argv[3])));
  writeOn(messages);
}
