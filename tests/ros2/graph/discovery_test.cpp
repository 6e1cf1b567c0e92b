#include <algorithm>
#include <cstdlib>
#include <dds/dds.h>
#include <functional>
#include <map>

#include <gmock/gmock.h>

#include "ros2/graph/graph.h"
#include "ros2/graph/internal/cdr_data.h"
#include "ros2/graph/internal/domain_settings.h"
#include "ros2/graph/internal/node_entities.h"
#include "ros2/messages/sensor_msgs.h"
#include "tests/ros2/support/own_domain.h"
#include "tests/support/log_capture.h"
#include "tests/support/vocabulary.h"

namespace QV::ros2 {
namespace {

using testing::HasSubstr;

TEST(NodeEntities, haveTheLayoutOfEachDistribution) {
  EXPECT_EQ(getNodesType(RosDistro::ironOrLater).getHash(),
            "RIHS01_91a0593bacdcc50ea9bdcf849a938b128412cc1ea821245c663bcd26f83c295e");
  const Guid participant = {1};
  const NodeEntities probe{"/", "probe", {}, {Guid{2}, Guid{3}}};
  for (const auto& [distro, gid] :
       {std::pair(RosDistro::humble, 24u), std::pair(RosDistro::ironOrLater, 16u)}) {
    const Bytes cdr = encodeNodes(distro, participant, {&probe});
    // Head, participant, count, "/", "probe", and the counts of readers and writers.
    ASSERT_EQ(cdr.size(), 4 + gid + 4 + (4 + 2 + 2) + (4 + 6 + 2) + 4 + 4 + 2 * gid);
    EXPECT_EQ(cdr[4], 1);
    EXPECT_EQ(cdr[cdr.size() - 2 * gid], 2);
    EXPECT_EQ(cdr[cdr.size() - gid], 3);
  }
}

struct Endpoint {
  std::string topic;
  std::string userData;
  Guid id;
  bool isWriter = false;
};

Guid guidOf(const dds_guid_t& id) {
  Guid guid;
  std::copy(std::begin(id.v), std::end(id.v), guid.begin());
  return guid;
}

std::string userDataOf(const dds_qos_t* qos) {
  void* data = nullptr;
  std::size_t size = 0;
  if (!dds_qget_userdata(qos, &data, &size)) return {};
  const std::string text(static_cast<char*>(data), size);
  dds_free(data);
  return text;
}

/** A participant of the bare engine, which sees what is told of others. */
class Observer {
 public:
  explicit Observer(const GraphOptions& options) {
    const dds_domainid_t inside = 77;
    domain = dds_create_domain(inside, settingsOf(options).c_str());
    participant = dds_create_participant(inside, nullptr, nullptr);
    waiting = dds_create_waitset(participant);
    participants = xRead(DDS_BUILTIN_TOPIC_DCPSPARTICIPANT);
    publications = xRead(DDS_BUILTIN_TOPIC_DCPSPUBLICATION);
    subscriptions = xRead(DDS_BUILTIN_TOPIC_DCPSSUBSCRIPTION);
    ddsi_sertype* type = makeCdrType(getNodesType(options.distro).getDdsName());
    dds_qos_t* const kept = dds_create_qos();
    dds_qset_reliability(kept, DDS_RELIABILITY_RELIABLE, DDS_MSECS(100));
    dds_qset_durability(kept, DDS_DURABILITY_TRANSIENT_LOCAL);
    nodes = xRead(
        dds_create_topic_sertype(participant, "ros_discovery_info", &type, kept, nullptr, nullptr),
        kept);
    dds_delete_qos(kept);
  }
  ~Observer() { dds_delete(domain); }

  /** Until it is so, or for a while. */
  bool awaitThat(const std::function<bool()>& reached) {
    while (!reached()) {
      if (dds_waitset_wait(waiting, nullptr, 0, DDS_SECS(10)) <= 0) return false;
      xTakeAll<dds_builtintopic_endpoint_t>(publications, [&](auto& of) { xAdd(of, true); });
      xTakeAll<dds_builtintopic_endpoint_t>(subscriptions, [&](auto& of) { xAdd(of, false); });
      xTakeAll<dds_builtintopic_participant_t>(participants, [&](auto& of) {
        if (!userDataOf(of.qos).empty()) others[guidOf(of.key)] = userDataOf(of.qos);
      });
      xTakeNodes();
    }
    return true;
  }

  std::vector<Endpoint> endpoints;
  /** The user data of other participants. */
  std::map<Guid, std::string> others;
  /** What was told of nodes last. */
  Bytes toldOfNodes;

 private:
  dds_entity_t xRead(dds_entity_t topic, const dds_qos_t* qos = nullptr) {
    const dds_entity_t reader = dds_create_reader(participant, topic, qos, nullptr);
    dds_waitset_attach(waiting, dds_create_readcondition(reader, DDS_NOT_READ_SAMPLE_STATE),
                       reader);
    return reader;
  }

  template <typename Sample, typename Take>
  static void xTakeAll(dds_entity_t reader, const Take& take) {
    void* samples[64] = {};
    dds_sample_info_t infos[64];
    const auto count = dds_take(reader, samples, infos, 64, 64);
    for (int i = 0; i < count; ++i)
      if (infos[i].valid_data) take(*static_cast<const Sample*>(samples[i]));
    if (count > 0) dds_return_loan(reader, samples, count);
  }

  void xTakeNodes() {
    ddsi_serdata* message = nullptr;
    dds_sample_info_t info;
    while (dds_takecdr(nodes, &message, 1, &info, DDS_ANY_STATE) == 1) {
      if (info.valid_data) toldOfNodes = static_cast<const CdrData&>(*message).bytes;
      ddsi_serdata_unref(message);
    }
  }

  void xAdd(const dds_builtintopic_endpoint_t& of, bool isWriter) {
    const std::string topic = of.topic_name;
    const std::string userData = userDataOf(of.qos);
    // Its own reader of nodes tells nothing.
    if (topic.starts_with("DCPS") || (topic == "ros_discovery_info" && !isWriter)) return;
    endpoints.push_back({topic, userData, guidOf(of.key), isWriter});
  }

  dds_entity_t domain;
  dds_entity_t participant;
  dds_entity_t waiting;
  dds_entity_t participants, publications, subscriptions, nodes;
};

struct Discovery : testing::Test {
  const GraphOptions options = test::aloneOn();
  Graph graph{options};
  std::unique_ptr<GraphNode> node = graph.createNode("porter", "/robot1");
  std::unique_ptr<Publisher> publisher = node->publish("scan", sensor_msgs::LaserScan::getType());
  std::unique_ptr<Subscription> subscription =
      node->subscribe("range", sensor_msgs::Range::getType(), {}, [](auto&) {});
  Observer sut{options};
};

TEST_F(Discovery, everyEndpointAnnouncesItsTypeHash) {
  EXPECT_TRUE(sut.awaitThat([&] { return sut.endpoints.size() == 3; }));
  std::map<std::string, std::string> told;
  for (const Endpoint& endpoint : sut.endpoints) told[endpoint.topic] = endpoint.userData;
  const auto hash = [](const MessageType& type) { return "typehash=" + type.getHash() + ";"; };
  EXPECT_EQ(told, (std::map<std::string, std::string>{
                      {"ros_discovery_info", hash(getNodesType(options.distro))},
                      {"rt/robot1/range", hash(sensor_msgs::Range::getType())},
                      {"rt/robot1/scan", hash(sensor_msgs::LaserScan::getType())}}));
}

TEST_F(Discovery, announcesNodesWithTheirEndpointsWhileTheyExist) {
  ASSERT_TRUE(sut.awaitThat([&] { return sut.endpoints.size() == 3 && !sut.others.empty(); }));
  const auto& [participant, enclave] = *sut.others.begin();
  EXPECT_EQ(enclave, "enclave=/;");
  NodeEntities porter{"/robot1", "porter", {}, {}};
  for (const Endpoint& endpoint : sut.endpoints) {
    if (endpoint.topic == "rt/robot1/scan") porter.writers.push_back(endpoint.id);
    if (endpoint.topic == "rt/robot1/range") porter.readers.push_back(endpoint.id);
  }
  const auto tells = [&](const std::vector<const NodeEntities*>& nodes) {
    return sut.awaitThat(
        [&] { return sut.toldOfNodes == encodeNodes(options.distro, participant, nodes); });
  };
  EXPECT_TRUE(tells({&porter}));
  publisher.reset();
  porter.writers.clear();
  EXPECT_TRUE(tells({&porter}));
  subscription.reset();
  node.reset();
  EXPECT_TRUE(tells({}));
}

/** Variables for the scope of a test. */
class Environment {
 public:
  explicit Environment(const std::map<std::string, std::string>& values) {
    for (const char* const name : kNames) unsetenv(name);
    for (const auto& [name, value] : values) setenv(name.c_str(), value.c_str(), 1);
  }
  ~Environment() {
    for (const char* const name : kNames) unsetenv(name);
  }

 private:
  static constexpr const char* kNames[] = {
      "ROS_DOMAIN_ID",    "ROS_LOCALHOST_ONLY", "ROS_AUTOMATIC_DISCOVERY_RANGE",
      "ROS_STATIC_PEERS", "ROS_DISTRO",         "CYCLONEDDS_URI"};
};

std::string settingsWith(const std::map<std::string, std::string>& variables) {
  const Environment environment(variables);
  return settingsOf(graphOptionsFromEnvironment());
}

TEST(GraphOptions, followTheVariablesOfRos) {
  const std::string local = settingsWith({});
  EXPECT_THAT(local, HasSubstr("<AllowMulticast>false</AllowMulticast>"));
  EXPECT_THAT(local, HasSubstr("<ExternalDomainId>0</ExternalDomainId>"));
  EXPECT_THAT(local, HasSubstr("<Peer address=\"127.0.0.1\"/>"));
  const char* const kRange = "ROS_AUTOMATIC_DISCOVERY_RANGE";
  EXPECT_EQ(settingsWith({{"ROS_LOCALHOST_ONLY", "1"}, {kRange, "SUBNET"}}), local);
  const std::string subnet = settingsWith({{kRange, "SUBNET"}, {"ROS_DOMAIN_ID", "42"}});
  EXPECT_THAT(subnet, testing::Not(HasSubstr("AllowMulticast")));
  EXPECT_THAT(subnet, HasSubstr("<ExternalDomainId>42</ExternalDomainId>"));
  EXPECT_THAT(settingsWith({{kRange, "OFF"}}), HasSubstr("<Tag>qv_off_"));
  EXPECT_THAT(settingsWith({{"ROS_STATIC_PEERS", "10.0.0.2;;robot\"<"}}),
              HasSubstr("<Peer address=\"10.0.0.2\"/><Peer address=\"robot&quot;&lt;\"/>"));
  const std::string own = settingsWith({{"CYCLONEDDS_URI", "file:///robot.xml"}});
  EXPECT_THAT(own, testing::EndsWith("</CycloneDDS>,file:///robot.xml"));
  EXPECT_THAT(own, testing::Not(HasSubstr("AllowMulticast")));
  const Environment environment(std::map<std::string, std::string>{{"ROS_DISTRO", "humble"}});
  EXPECT_EQ(graphOptionsFromEnvironment().distro, RosDistro::humble);
}

std::string refusalWith(const std::map<std::string, std::string>& variables) {
  try {
    settingsWith(variables);
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return "taken";
}

TEST(GraphOptions, refuseInvalidValues) {
  for (const char* const value : {"-1", "102", "214", "233", "ten", "1.5"})
    EXPECT_EQ(refusalWith({{"ROS_DOMAIN_ID", value}}),
              "ROS_DOMAIN_ID: a number from 0 to 101 or 215 to 232 expected, \"" +
                  std::string(value) + "\" given");
  for (const char* const value : {"101", "215", "232"})
    EXPECT_EQ(refusalWith({{"ROS_DOMAIN_ID", value}}), "taken");
  EXPECT_EQ(refusalWith({{"ROS_AUTOMATIC_DISCOVERY_RANGE", "WIDE"}}),
            "ROS_AUTOMATIC_DISCOVERY_RANGE: OFF, LOCALHOST, SUBNET or SYSTEM_DEFAULT expected, "
            "\"WIDE\" given");
  const test::LogCapture log;
  EXPECT_EQ(refusalWith({{"ROS_DISTRO", "humbel"}}), "taken");
  EXPECT_THAT(log.lines(ko::log::Level::warning),
              testing::ElementsAre(HasSubstr("\"humbel\" given: taken for rolling")));
  GraphOptions broken;
  broken.configuration = "<CycloneDDS><Domain><Nothing/></Domain></CycloneDDS>";
  EXPECT_THAT(
      errorOf([&] { Graph{broken}; }),
      testing::StartsWith("a configuration of Cyclone DDS in CYCLONEDDS_URI expected, "
                          "\"<CycloneDDS><Domain><Nothing/></Domain></CycloneDDS>\" given"));
}

}  // namespace
}  // namespace QV::ros2
