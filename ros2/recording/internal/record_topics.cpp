#include "ros2/recording/internal/record_topics.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "outlets/internal/seen_places.h"
#include "ros2/messages/report_msgs.h"
#include "ros2/recording/internal/conversions.h"
#include "ros2/recording/internal/health_statuses.h"
#include "ros2/recording/internal/topic_names.h"

namespace QV::ros2 {
namespace {

constexpr std::uint8_t kFloatField = 7;
constexpr std::int32_t kLineStrip = 4;

sensor_msgs::PointCloud2 emptyCloud() {
  static_assert(sizeof(Math::Position3D) == 3 * sizeof(float));
  sensor_msgs::PointCloud2 cloud;
  cloud.height = 1;
  cloud.fields = {{"x", 0, kFloatField, 1}, {"y", 4, kFloatField, 1}, {"z", 8, kFloatField, 1}};
  cloud.point_step = sizeof(Math::Position3D);
  cloud.is_dense = true;
  return cloud;
}

void append(sensor_msgs::PointCloud2& cloud, const std::vector<Math::Position3D>& points) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(points.data());
  cloud.data.insert(cloud.data.end(), bytes, bytes + points.size() * sizeof(Math::Position3D));
  cloud.width += static_cast<std::uint32_t>(points.size());
  cloud.row_step = cloud.point_step * cloud.width;
}

void clear(sensor_msgs::PointCloud2& cloud, ko::Clock::time_point time, const std::string& frame) {
  cloud.header = headerOf(time, frame);
  cloud.width = cloud.row_step = 0;
  cloud.data.clear();
}

std::vector<Math::Position3D> pointsOf(const session::Marks& marks) {
  std::vector<Math::Position3D> points = marks.hits;
  points.insert(points.end(), marks.floor.begin(), marks.floor.end());
  for (const auto& echo : marks.echoes) {
    const auto arc = positionsOn(echo, outlets::kArcPoints);
    points.insert(points.end(), arc.begin(), arc.end());
  }
  return points;
}

/** Around the sensor's x axis: from the apex along the arc and back. */
std::vector<geometry_msgs::Point> outlineOf(const Math::SensorFieldOfView2D& view) {
  std::vector<geometry_msgs::Point> outline{{}};
  for (int i = 0; i <= outlets::kArcPoints; ++i) {
    const double angle = view.angularRange * (static_cast<double>(i) / outlets::kArcPoints - 0.5);
    outline.push_back({view.maxRange * std::cos(angle), view.maxRange * std::sin(angle), 0.0});
  }
  outline.push_back({});
  return outline;
}

visualization_msgs::Marker markerOf(const session::SensorState& sensor,
                                    const session::Snapshot& snapshot, const std::string& base) {
  constexpr double kWidth = 0.01;
  const auto& record = sensor.records.front();
  visualization_msgs::Marker marker;
  marker.header = headerOf(snapshot.time, base);
  marker.ns = sensor.name;
  marker.type = kLineStrip;
  // Simulated fans look along the robot's heading, real ones from where they are mounted.
  marker.pose = snapshot.frame == session::Frame::robot
                    ? poseOf(record.sensorTransform)
                    : poseOf(Math::pinv(snapshot.pose) * sensor.view->apex);
  marker.scale.x = kWidth;
  marker.color = {0.2f, 0.6f, 1.0f, 0.6f};
  marker.frame_locked = true;
  marker.points = outlineOf(record.fieldOfView);
  return marker;
}

constexpr std::int32_t kCylinder = 3;
constexpr std::int32_t kDeleteAll = 3;

visualization_msgs::Marker personAt(const Math::Position3D& head, const std_msgs::Header& header) {
  constexpr double kWidth = 0.5;
  constexpr double kHeight = 1.8;
  visualization_msgs::Marker marker;
  marker.header = header;
  marker.ns = "people";
  marker.type = kCylinder;
  marker.pose.position = {head.x, head.y, 0.5 * kHeight};
  marker.scale = {kWidth, kWidth, kHeight};
  marker.color = {1.0f, 0.6f, 0.2f, 0.8f};
  return marker;
}

/** True if the sensor's state equals the one written last. */
bool isState(const session::SensorState& sensor, const qv_msgs::SensorState& written) {
  return sensor.name == written.name && sensor.started == written.started &&
         sensor.enabled == written.enabled && sensor.diagnosis == written.diagnosis &&
         std::ranges::equal(sensor.subscribers, written.subscribers);
}

}  // namespace

RecordTopics::RecordTopics(MessageSink& sink, const FrameNames& names,
                           std::set<std::string> mounted, CameraPoints* cameraPoints)
    : sink(sink),
      names(names),
      mounted(std::move(mounted)),
      cameraPoints(cameraPoints),
      records(sink.add<qv_msgs::Records>(kRecordsTopic)),
      states(sink.add<qv_msgs::SensorStates>("/qv/sensors", kLatched)),
      views(sink.add<visualization_msgs::MarkerArray>("/fields_of_view", kLatched)),
      people(sink.add<visualization_msgs::MarkerArray>("/people_markers")),
      diagnostics(sink.add<diagnostic_msgs::DiagnosticArray>("/diagnostics")),
      cloud(emptyCloud()) {}

void RecordTopics::announce(const std::set<std::string>& sensors) {
  for (const std::string& sensor : sensors) xTopicOf(sensor);
}

void RecordTopics::write(const session::Snapshot& snapshot) {
  message.records.clear();
  for (const session::SensorState& sensor : snapshot.sensors) {
    if (sensor.records.empty()) continue;
    xWriteSensor(sensor, snapshot.time);
    xNoteView(sensor, snapshot);
  }
  if (sink.isRead(records)) sink.write(records, logTimeOf(snapshot.time), message);
  if (hasNewViews) sink.write(views, logTimeOf(snapshot.time), markers);
  hasNewViews = false;
  xWritePeople(snapshot);
  xWriteStates(snapshot);
  xWriteHealth(snapshot);
}

// Other sensors' points may be no obstacles, and stay out of their clouds.
bool RecordTopics::xHasOwnCloud(const session::SensorState& sensor) const {
  return sensor.points == Model::PointMeaning::sighting && mounted.count(sensor.name) > 0;
}

std::uint16_t RecordTopics::xTopicOf(const std::string& name) {
  const auto found = clouds.find(name);
  if (found != clouds.end()) return found->second;
  const auto topic = sink.add<sensor_msgs::PointCloud2>(cloudTopicOf(name), {}, name);
  return clouds.emplace(name, topic).first->second;
}

void RecordTopics::xAddRecords(const session::SensorState& sensor) {
  for (const auto& record : sensor.records) {
    auto& points = message.records.emplace_back(messageWithoutPoints(record)).points;
    points.reserve(record.points.size());
    for (const auto& point : record.points) points.push_back({point.x, point.y, point.z});
  }
}

void RecordTopics::xAddRecordsOf(const session::SensorState& sensor, const std::string& topic) {
  std::uint32_t start = 0;
  for (const auto& record : sensor.records) {
    auto& added = message.records.emplace_back(messageWithoutPoints(record));
    added.cloud = topic;
    added.cloud_start = start;
    added.cloud_count = static_cast<std::uint32_t>(record.points.size());
    start += added.cloud_count;
  }
}

// If all points are pixels of a recorded image, viewers are shown some of them.
void RecordTopics::xWriteSensor(const session::SensorState& sensor, ko::Clock::time_point time) {
  const bool hasOwnCloud = xHasOwnCloud(sensor);
  const bool isOfImage = hasOwnCloud && cameraPoints && cameraPoints->write(sensor, time);
  if (!hasOwnCloud && sink.isRead(records)) xAddRecords(sensor);
  if (hasOwnCloud && sink.isRead(records))
    xAddRecordsOf(sensor, isOfImage ? imagePointsTopicOf(sensor.name) : cloudTopicOf(sensor.name));
  const std::uint16_t topic = xTopicOf(sensor.name);
  if (!sink.isRead(topic)) return;
  if (!hasOwnCloud) {
    clear(cloud, time, names.ofMap());
    append(cloud, pointsOf(sensor.marks));
  } else {
    clear(cloud, sensor.records.front().timestamp, names.of(sensor.name));
    if (isOfImage) append(cloud, cameraPoints->getThinned());
    for (const auto& record : sensor.records) {
      if (!isOfImage) append(cloud, record.points);
    }
  }
  sink.write(topic, logTimeOf(time), cloud);
}

// Markers of people who are no longer seen are deleted.
void RecordTopics::xWritePeople(const session::Snapshot& snapshot) {
  const std_msgs::Header header = headerOf(snapshot.time, names.ofMap());
  visualization_msgs::MarkerArray seen;
  seen.markers.resize(1);
  seen.markers.front().header = header;
  seen.markers.front().action = kDeleteAll;
  for (const session::SensorState& sensor : snapshot.sensors) {
    if (sensor.name != kPeoplePerception) continue;
    for (const Math::Position3D& head : sensor.marks.hits) {
      seen.markers.push_back(personAt(head, header));
      seen.markers.back().id = static_cast<std::int32_t>(seen.markers.size());
    }
  }
  const bool isAnybodyThere = seen.markers.size() > 1;
  const bool wereSome = std::exchange(hasShownPeople, isAnybodyThere);
  if (isAnybodyThere || wereSome) sink.write(people, logTimeOf(snapshot.time), seen);
}

void RecordTopics::xNoteView(const session::SensorState& sensor,
                             const session::Snapshot& snapshot) {
  if (!sensor.view) return;
  const auto& view = sensor.view->fieldOfView;
  const auto [seen, isNew] = seenViews.emplace(sensor.name, view);
  if (!isNew && seen->second == view) return;
  seen->second = view;
  hasNewViews = true;
  std::erase_if(markers.markers, [&](const auto& marker) { return marker.ns == sensor.name; });
  markers.markers.push_back(markerOf(sensor, snapshot, names.ofBase()));
}

void RecordTopics::xWriteStates(const session::Snapshot& snapshot) {
  if (std::ranges::equal(snapshot.sensors, lastStates.sensors, isState)) return;
  lastStates.sensors.clear();
  for (const auto& sensor : snapshot.sensors) {
    lastStates.sensors.push_back({sensor.name,
                                  sensor.started,
                                  sensor.enabled,
                                  sensor.diagnosis,
                                  {sensor.subscribers.begin(), sensor.subscribers.end()}});
  }
  sink.write(states, logTimeOf(snapshot.time), lastStates);
}

void RecordTopics::xWriteHealth(const session::Snapshot& snapshot) {
  const auto isKnown = [](const session::SensorState& sensor, const auto& known) {
    return sensor.name == known.first && sensor.health.state == known.second;
  };
  if (lastHealth && std::ranges::equal(snapshot.sensors, *lastHealth, isKnown)) return;
  lastHealth.emplace();
  for (const auto& sensor : snapshot.sensors)
    lastHealth->emplace_back(sensor.name, sensor.health.state);
  const diagnostic_msgs::DiagnosticArray message{headerOf(snapshot.time, names.ofBase()),
                                                 statusesOf(snapshot)};
  sink.write(diagnostics, logTimeOf(snapshot.time), message);
}

}  // namespace QV::ros2
