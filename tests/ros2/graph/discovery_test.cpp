#include <cstdlib>
#include <dds/dds.h>
#include <map>

#include <gmock/gmock.h>

#include "ros2/graph/graph.h"
#include "ros2/graph/internal/domain_settings.h"
#include "ros2/graph/internal/node_entities.h"
#include "ros2/messages/sensor_msgs.h"
#include "tests/ros2/support/own_domain.h"

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

/** A participant of the bare engine, which sees what is told of others. */
class Observer {
 public:
  explicit Observer(const GraphOptions& options) {
    const dds_domainid_t inside = 77;
    domain = dds_create_domain(inside, settingsOf(options).c_str());
    participant = dds_create_participant(inside, nullptr, nullptr);
    waiting = dds_create_waitset(participant);
    for (const auto topic :
         {DDS_BUILTIN_TOPIC_DCPSPUBLICATION, DDS_BUILTIN_TOPIC_DCPSSUBSCRIPTION}) {
      const dds_entity_t reader = dds_create_reader(participant, topic, nullptr, nullptr);
      dds_waitset_attach(waiting, dds_create_readcondition(reader, DDS_NOT_READ_SAMPLE_STATE),
                         reader);
      readers.push_back(reader);
    }
  }
  ~Observer() { dds_delete(domain); }

  /** The user data of all endpoints by their topics, once there are `count`; or after a while. */
  std::multimap<std::string, std::string> await(std::size_t count) {
    std::multimap<std::string, std::string> found;
    while (found.size() < count) {
      if (dds_waitset_wait(waiting, nullptr, 0, DDS_SECS(10)) <= 0) return found;
      for (const dds_entity_t reader : readers) xRead(reader, found);
    }
    return found;
  }

 private:
  static void xRead(dds_entity_t reader, std::multimap<std::string, std::string>& found) {
    void* samples[32] = {};
    dds_sample_info_t infos[32];
    const auto count = dds_take(reader, samples, infos, 32, 32);
    for (int i = 0; i < count; ++i) {
      const auto& endpoint = *static_cast<const dds_builtintopic_endpoint_t*>(samples[i]);
      void* data = nullptr;
      std::size_t size = 0;
      if (!infos[i].valid_data || std::string(endpoint.topic_name).starts_with("DCPS")) continue;
      if (!dds_qget_userdata(endpoint.qos, &data, &size)) continue;
      found.emplace(endpoint.topic_name, std::string(static_cast<char*>(data), size));
      dds_free(data);
    }
    if (count > 0) dds_return_loan(reader, samples, count);
  }

  dds_entity_t domain;
  dds_entity_t participant;
  dds_entity_t waiting;
  std::vector<dds_entity_t> readers;
};

TEST(Discovery, everyEndpointAnnouncesItsTypeHash) {
  const GraphOptions options = test::aloneOn();
  Graph graph(options);
  const auto node = graph.createNode("porter");
  const auto publisher = node->publish("scan", sensor_msgs::LaserScan::getType());
  const auto subscription =
      node->subscribe("range", sensor_msgs::Range::getType(), {}, [](auto&) {});
  Observer sut(options);
  const auto hash = [](const MessageType& type) { return "typehash=" + type.getHash() + ";"; };
  EXPECT_EQ(sut.await(3), (std::multimap<std::string, std::string>{
                              {"ros_discovery_info", hash(getNodesType(options.distro))},
                              {"rt/range", hash(sensor_msgs::Range::getType())},
                              {"rt/scan", hash(sensor_msgs::LaserScan::getType())}}));
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
  for (const char* const value : {"-1", "102", "ten", "1.5"})
    EXPECT_EQ(
        refusalWith({{"ROS_DOMAIN_ID", value}}),
        "ROS_DOMAIN_ID: a number from 0 to 101 expected, \"" + std::string(value) + "\" given");
  EXPECT_EQ(refusalWith({{"ROS_AUTOMATIC_DISCOVERY_RANGE", "WIDE"}}),
            "ROS_AUTOMATIC_DISCOVERY_RANGE: OFF, LOCALHOST, SUBNET or SYSTEM_DEFAULT expected, "
            "\"WIDE\" given");
  GraphOptions broken;
  broken.configuration = "<CycloneDDS><Domain><Nothing/></Domain></CycloneDDS>";
  EXPECT_THROW(Graph{broken}, std::runtime_error);
}

}  // namespace
}  // namespace QV::ros2
