#include "ros2/recording/internal/session_reader.h"

#include <algorithm>
#include <cstring>
#include <ranges>
#include <stdexcept>
#include <utility>

#include <boost/make_shared.hpp>

#include "ros2/recording/internal/bag_robot.h"
#include "ros2/recording/internal/conversions.h"
#include "ros2/recording/internal/image_points.h"
#include "ros2/recording/internal/topic_names.h"

namespace QV::ros2 {
namespace {

using Point = Math::Position3D;

// The limit is higher than any robot's messages between two events.
constexpr std::size_t kMostWaiting = 200'000;
constexpr std::size_t kMostImages = 100;
// The limits are higher than any recorder's messages; a map has a byte per cell.
constexpr std::size_t kLargestMessage = std::size_t{64} << 20;
constexpr std::size_t kLargestMap = std::size_t{256} << 20;
// The reader keeps at least as many images as a recorder may refer to.
constexpr std::size_t kRecentImages = 4;

RecordingFacts readFacts(const BagReader& bag) {
  for (const BagMetadata& metadata : bag.getMetadata()) {
    if (metadata.name == RecordingFacts::kName) return RecordingFacts::fromValues(metadata.values);
  }
  throw std::runtime_error("a recording of this library expected, the metadata \"qv\" is missing");
}

template <typename Message>
bool holds(const BagMessage& message) {
  return message.topic->encoding == "cdr" && message.topic->type == Message::getType().getName();
}

template <typename Message>
bool holds(const BagMessage& message, const char* topic) {
  return message.topic->name == topic && holds<Message>(message);
}

std::uint64_t sizeOf(const std::vector<InputWrite>& writes) {
  std::uint64_t size = 0;
  for (const InputWrite& write : writes) size += sizeof write + write.key.size();
  return size;
}

std::uint64_t sizeOf(const qv_msgs::Records& records) {
  std::uint64_t points = 0;
  for (const auto& record : records.records) points += record.points.size() + record.cloud_count;
  return points * sizeof(Point) + records.records.size() * sizeof(Math::MetricalData);
}

}  // namespace

SessionReader::SessionReader(const std::string& path)
    : path(path), bag(path, BagOrder::file), facts(readFacts(bag)), lastInput(facts.start) {
  while (inputs.empty() && events.empty() && xRead()) {
  }
  for (std::size_t i = 0; i < bag.getAttachmentCount(); ++i) {
    const auto attachment = bag.readAttachment(i);
    if (attachment && attachment->name == kExactMap)
      map = boost::make_shared<OccupancyMap>(mapOf(*attachment));
    if (attachment && attachment->name == kExactDescription)
      description.assign(attachment->data.begin(), attachment->data.end());
  }
  if (!map && !facts.sort.starts_with("simulated ")) map = makeUnknownMap();
  if (map) map->setShift(facts.shift);
}

void SessionReader::readInputsTo(ko::Clock::time_point time) {
  while (lastInput <= time && xRead()) {
  }
}

bool SessionReader::readEvent() {
  while (events.empty() && xRead()) {
  }
  return !events.empty();
}

bool SessionReader::xRead() {
  const auto message = bag.next();
  if (!message) return false;
  try {
    xTake(*message);
  } catch (const std::exception& error) {
    throw std::runtime_error(path + ": " + message->topic->name + " at " +
                             std::to_string(message->logTime) + " ns: " + error.what());
  }
  if (inputs.size() > kMostWaiting || events.size() > kMostWaiting)
    throw std::runtime_error(path + ": records expected after " + std::to_string(kMostWaiting) +
                             " other messages, none given");
  return true;
}

void SessionReader::xTake(const BagMessage& message) {
  const auto time = timeOf(message.logTime);
  const bool isMap = holds<nav_msgs::OccupancyGrid>(message, kMapTopic);
  const std::size_t most = isMap ? kLargestMap : kLargestMessage;
  if (message.data.size() > most)
    throw std::runtime_error("up to " + std::to_string(most) + " bytes expected, " +
                             std::to_string(message.data.size()) + " given");
  if (isMap) return xTakeMap(message);
  if (holds<qv_msgs::Inputs>(message, kInputsTopic)) return xTakeInputs(message);
  if (holds<qv_msgs::Records>(message, kRecordsTopic)) return xTakeRecords(message);
  if (holds<tf2_msgs::TFMessage>(message, "/tf")) return xTakeTransforms(message);
  if (holds<sensor_msgs::Image>(message)) return xTakeImage(message);
  if (holds<sensor_msgs::PointCloud2>(message)) return xTakeCloud(message);
  if (holds<qv_msgs::ImagePoints>(message)) return xTakeImagePoints(message);
  if (holds<qv_msgs::Command>(message, kCommandsTopic)) {
    SessionEvent event{SessionEvent::Sort::command, time, fromCdr<qv_msgs::Command>(message.data)};
    event.claim =
        waiting.claim(message.data.size() + event.command.sensors.size() * sizeof(std::string));
    events.push_back(std::move(event));
  }
  if (holds<std_msgs::String>(message, kDescriptionTopic)) {
    description = fromCdr<std_msgs::String>(message.data).data;
  }
}

void SessionReader::xTakeInputs(const BagMessage& message) {
  const auto told = fromCdr<qv_msgs::Inputs>(message.data);
  const auto& [forward, leftward, turn] = told.velocity;
  auto writes = decoder.decode(told);
  auto claim =
      waiting.claim(message.data.size() + sizeOf(writes) + told.types.size() * sizeof(QVValue));
  lastInput = timeOf(message.logTime);
  inputs.push_back(
      {lastInput, told.stepped, {forward, leftward, turn}, std::move(writes), std::move(claim)});
}

// The robot in the map: by way of its odometry.
void SessionReader::xTakeTransforms(const BagMessage& message) {
  Math::Pose2D pose;
  for (const auto& transform : fromCdr<tf2_msgs::TFMessage>(message.data).transforms) {
    const auto& [translation, rotation] = transform.transform;
    pose =
        pose * poseOf(geometry_msgs::Pose{{translation.x, translation.y, translation.z}, rotation});
  }
  SessionEvent event{SessionEvent::Sort::pose, timeOf(message.logTime)};
  event.pose = pose;
  events.push_back(std::move(event));
}

void SessionReader::xTakeImage(const BagMessage& message) {
  const auto image = fromCdr<sensor_msgs::Image>(message.data);
  const auto height = static_cast<int>(image.height);
  const auto width = static_cast<int>(image.width);
  const bool isDepth = image.encoding == "16UC1" && image.width > 0 && image.height > 0 &&
                       image.width < 65'536 && image.height < 65'536 &&
                       image.data.size() == std::size_t{2} * image.width * image.height;
  if (!isDepth) throw std::runtime_error("a 16UC1 image of its size expected");
  SessionImage taken{timeOf(message.logTime), timeOf(image.header.stamp),
                     cv::Mat_<std::uint16_t>(height, width), waiting.claim(image.data.size())};
  std::memcpy(taken.depth.data, image.data.data(), image.data.size());
  const std::string& topic = message.topic->name;
  auto& recent = recentImages[topic];
  recent.push_back(taken);
  if (recent.size() > kRecentImages) recent.pop_front();
  auto& queue = images[topic.substr(1, topic.rfind('/') - 1)];
  queue.push_back(std::move(taken));
  if (queue.size() > kMostImages) queue.pop_front();
}

void SessionReader::xTakeCloud(const BagMessage& message) {
  const auto cloud = fromCdr<sensor_msgs::PointCloud2>(message.data);
  Cloud& taken = clouds[message.topic->name];
  taken = {};
  auto claim = waiting.claim(cloud.data.size());
  taken = {message.logTime, std::vector<Point>(cloud.data.size() / sizeof(Point)),
           std::move(claim)};
  if (taken.points.empty()) return;
  std::memcpy(taken.points.data(), cloud.data.data(), taken.points.size() * sizeof(Point));
}

void SessionReader::xTakeImagePoints(const BagMessage& message) {
  const auto points = fromCdr<qv_msgs::ImagePoints>(message.data);
  const auto time = timeOf(static_cast<std::uint64_t>(points.image_time));
  // The later of two images with one time counts.
  for (const SessionImage& image : recentImages[points.image] | std::views::reverse) {
    if (image.time != time) continue;
    Cloud& taken = clouds[message.topic->name];
    taken = {};
    auto claim = waiting.claim(image.depth.total() * sizeof(Point));
    taken = {message.logTime, decodePoints(points, image.depth), std::move(claim)};
    return;
  }
}

// A look whose points lie in a damaged part can't be compared.
void SessionReader::xTakeRecords(const BagMessage& message) {
  SessionEvent event{SessionEvent::Sort::look, timeOf(message.logTime)};
  const auto all = fromCdr<qv_msgs::Records>(message.data);
  event.claim = waiting.claim(message.data.size() + sizeOf(all));
  for (const auto& told : all.records) {
    event.records.push_back(recordOf(told));
    if (!told.cloud.empty() && !xAddPoints(told, message.logTime, event.records.back()))
      return void(++leftOut);
  }
  events.push_back(std::move(event));
}

bool SessionReader::xAddPoints(const qv_msgs::MetricalData& message, std::uint64_t time,
                               Math::MetricalData& record) const {
  const auto cloud = clouds.find(message.cloud);
  if (cloud == clouds.end() || cloud->second.time != time) return false;
  const auto& points = cloud->second.points;
  if (points.size() < std::size_t{message.cloud_start} + message.cloud_count)
    throw std::runtime_error(std::to_string(message.cloud_count) + " points of " +
                             message.sensor_name + " expected on " + message.cloud + " from " +
                             std::to_string(message.cloud_start) + " on, it has " +
                             std::to_string(points.size()));
  const auto begin = points.begin() + message.cloud_start;
  record.points.assign(begin, begin + message.cloud_count);
  return true;
}

void SessionReader::xTakeMap(const BagMessage& message) {
  if (map) return;
  map = boost::make_shared<OccupancyMap>(mapOf(fromCdr<nav_msgs::OccupancyGrid>(message.data)));
}

}  // namespace QV::ros2
