#include <algorithm>
#include <filesystem>
#include <regex>

#include <gmock/gmock.h>

#include "ros2/bag/bag_reader.h"
#include "ros2/messages/internal/layout.h"
#include "tests/support/real_data.h"
#include "tests/support/temporary_folder.h"

namespace QV::ros2 {
namespace {

using Counts = std::map<std::string, std::uint64_t>;

struct Recorded {
  const char* file;
  /** The counts by topic. */
  Counts counts;
  double seconds;
};

const std::vector<Recorded>& recordings() {
  static const std::vector<Recorded> list = {
      {"ros2_native/mumble_hallway_room_loop.db3", {{"/scan", 896}, {"/imu_data", 3698}}, 123.23},
      {"ros2_native/mumble_kitchen_1.db3", {{"/scan", 675}, {"/imu_data", 2912}}, 97.03},
      {"ros2_native/mumble_straight.db3", {{"/scan", 147}, {"/imu_data", 590}}, 19.63},
      {"ros2_native/crazyflie_pitch45.mcap",
       {{"/cf_logpos", 521},
        {"/cf_controll", 521},
        {"/vicon/Group466CF/Group466CF/pose", 5191},
        {"/cf_command", 1},
        {"/cf_appchannel", 0}},
       52.0},
      {"ros2_native/crazyflie_yx4.mcap",
       {{"/cf_logpos", 236},
        {"/cf_logerr", 237},
        {"/cf_controll", 237},
        {"/vicon/Group466CF/Group466CF/pose", 2359},
        {"/cf_command", 4},
        {"/cf_appchannel", 0}},
       23.58},
      {"ros2_native/truck_clouds.mcap", {{"cloud_1", 1}, {"cloud_2", 1}, {"cloud_3", 1}}, 0.0},
      {"ros2_native/rosbag2_talker.mcap",
       {{"/rosout", 10}, {"/parameter_events", 0}, {"/topic", 10}},
       4.53},
      {"ros2_native/rosbag2_cdr_test.mcap", {{"/test_topic", 3}, {"/array_topic", 4}}, 0.15},
      {"ros2_native/rosbag2_wrong_format.mcap", {{"/test_topic", 3}, {"/array_topic", 4}}, 0.15},
      {"ros2_native/rosbag2_topics_and_services.mcap",
       {{"/rosout", 0},
        {"/parameter_events", 7},
        {"/events/write_split", 0},
        {"/add_two_ints2/_service_event", 0},
        {"/add_two_ints/_service_event", 6}},
       1.51},
      {"ros2_native/rosbag2_rewriter_a.mcap", {{"a_empty", 100}, {"b_basictypes", 50}}, 0.10},
      {"ros2_native/rosbag2_wbag_0.mcap",
       {{"AAA", 174},
        {"BBB", 145},
        {"CCC", 157},
        {"DDD", 163},
        {"EEE", 147},
        {"FFF", 171},
        {"GGG", 141},
        {"HHH", 148}},
       0.0},
      {"mumble_hallway_loop.mcap", {{"/scan", 896}, {"/imu_data", 3698}}, 123.23},
      {"mumble_straight.mcap", {{"/scan", 147}, {"/imu_data", 590}}, 19.63},
      {"sick_lms_rms.mcap",
       {{"/sick_lms_1xx/scan", 89},
        {"/cloud", 89},
        {"/cloud_radar_track", 108},
        {"/diagnostics", 3},
        {"/cloud_radar_rawtarget", 139},
        {"/tf", 17}},
       1.76},
      {"leg_tracker_simple.mcap", {{"/scan", 1265}}, 125.99},
      {"husky_odom_imu.mcap",
       {{"/imu/data", 11865}, {"/husky_velocity_controller/odom", 3952}},
       395.31}};
  return list;
}

Counts countsOf(const BagInfo& info) {
  Counts counts;
  for (const auto& row : info.topics) counts[row.topic.name] += row.count;
  return counts;
}

/** Types and names alone: no comments, no defaults, no packages, which may be left out. */
std::string bareSchema(const std::string& text) {
  static const std::regex kField(R"((\w+/)?([\w<=]+(\[.*\])?) +(\w+).*)");
  std::istringstream lines(text);
  std::string result;
  std::smatch parts;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("MSG: ")) result += line + "\n";
    if (line.find('=') == std::string::npos && std::regex_match(line, parts, kField))
      result += parts.str(2) + " " + parts.str(4) + "\n";
  }
  return result;
}

struct RecordingsTest : testing::TestWithParam<Recorded> {
  void SetUp() override {
    const auto found = test::findRealData(std::string("bags/") + GetParam().file);
    if (!found) GTEST_SKIP() << "no recordings";
    path = *found;
  }
  std::string path;
};

TEST_P(RecordingsTest, isReadCompletelyAndInTheOrderOfTime) {
  const BagInfo info = readBagInfo(path);
  EXPECT_EQ(countsOf(info), GetParam().counts);
  EXPECT_NEAR(1e-9 * static_cast<double>(info.endTime - info.startTime), GetParam().seconds, 0.006);
  EXPECT_THAT(info.damage.lines, testing::IsEmpty());
  BagReader sut(path);
  std::uint64_t before = 0;
  while (const auto message = sut.next()) {
    ASSERT_LE(before, message->logTime);
    before = message->logTime;
  }
}

TEST_P(RecordingsTest, messagesOfKnownTypesAreDecodedAndEncodedToTheSameBytes) {
  BagReader sut(path);
  for (const BagTopic* const topic : sut.getTopics()) {
    const MessageType* const type = findMessageType(topic->type);
    if (type == nullptr) continue;
    EXPECT_EQ(bareSchema(topic->schema), bareSchema(type->getSchema())) << topic->type;
    const auto hash = topic->metadata.find("topic_type_hash");
    if (hash != topic->metadata.end() && !hash->second.empty()) {
      EXPECT_EQ(hash->second, type->getHash()) << topic->type;
    }
  }
  while (const auto message = sut.next()) {
    const MessageType* const type = findMessageType(message->topic->type);
    if (type == nullptr || message->topic->encoding != "cdr") continue;
    const auto decoded = layoutOf(*type).make();
    type->decode(message->data, decoded.get());
    Bytes encoded;
    type->encode(decoded.get(), encoded);
    // Some writers leave anything in their padding, and pad the end, too.
    ASSERT_LE(message->data.size() - encoded.size(), 3u) << type->getName();
    ASSERT_TRUE(std::equal(encoded.begin(), encoded.end(), message->data.begin(),
                           [](int ours, int theirs) { return ours == theirs || ours == 0; }))
        << type->getName() << " at " << message->logTime;
  }
}

/** All that a reader gives, as text to compare. */
std::string contentOf(const std::string& path) {
  BagReader reader(path);
  std::string text;
  while (const auto message = reader.next())
    text += message->topic->name + " " + std::to_string(message->logTime) + " " +
            std::to_string(message->publishTime) + " " +
            std::string(message->data.begin(), message->data.end()) + "\n";
  return text;
}

TEST_P(RecordingsTest, theIntactPartOfACutRecordingIsRecovered) {
  const test::TemporaryFolder folder;
  const std::string whole = folder / "whole.mcap";
  const BagInfo info = recoverBag(path, whole);
  EXPECT_EQ(countsOf(info), GetParam().counts);
  EXPECT_EQ(contentOf(whole), contentOf(path));
  std::filesystem::resize_file(whole, std::filesystem::file_size(whole) * 2 / 3);
  const BagInfo cut = recoverBag(whole, folder / "again.mcap");
  EXPECT_LE(cut.count, info.count);
  EXPECT_THAT(cut.damage.lines, testing::Contains(testing::HasSubstr("no magic at the end")));
  const BagInfo again = readBagInfo(folder / "again.mcap");
  EXPECT_EQ(again.count, cut.count);
  EXPECT_THAT(again.damage.lines, testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(All, RecordingsTest, testing::ValuesIn(recordings()),
                         [](const auto& recorded) {
                           return std::regex_replace(std::string(recorded.param.file),
                                                     std::regex("[^a-z0-9]"), "_");
                         });

TEST(BagFolder, isReadByItsMetadata) {
  const auto file = test::findRealData("bags/ros2_native/mumble_straight.db3");
  if (!file) GTEST_SKIP() << "no recordings";
  const test::TemporaryFolder folder;
  std::filesystem::copy_file(*file, folder / "mumble_imu_lidar_bag_0.db3");
  std::filesystem::copy_file(std::filesystem::path(*file).replace_extension("metadata.yaml"),
                             folder / "metadata.yaml");
  EXPECT_EQ(readBagInfo(folder.string()).count, 737u);
}

}  // namespace
}  // namespace QV::ros2
