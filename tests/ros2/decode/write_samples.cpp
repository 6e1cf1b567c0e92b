// Writes recordings with a message of every type to a folder, and beside them what is in these
// messages.

#include <cmath>
#include <fstream>
#include <iostream>

#include "platform/middleware/qv_memory_proxy.h"
#include "robot/world/virtual_robot.h"
#include "ros2/bag/bag_writer.h"
#include "ros2/recording/session_recorder.h"
#include "session/internal/session_parts.h"
#include "session/open.h"
#include "tests/ros2/support/filled_message.h"

namespace {

using namespace QV;

void writeSamples(const std::string& path, ros2::Compression compression) {
  ros2::BagWriter writer(path, {compression, 3000});
  std::uint64_t time = 1'700'000'000'000'000'000;
  for (const ros2::MessageType* const type : ros2::getMessageTypes()) {
    const auto topic = writer.addTopic(ros2::makeBagTopic("/" + type->getName(), *type));
    ros2::Bytes cdr;
    // The samples are a default message and one full of values.
    type->encode(layoutOf(*type).make().get(), cdr);
    writer.write(topic, time + 500, time, cdr);
    type->encode(test::fillMessage(*type).get(), cdr);
    writer.write(topic, time + 1000, time, cdr);
    time += 1000;
  }
  writer.addAttachment({"map.pgm", "image/x-portable-graymap", time, 0, ros2::Bytes(1000, 7)});
  writer.close();
}

/** Returns the metres that the drivers left in the robot's memory. */
float inMemory(const session::Session& robot, const std::string& key) {
  return QVMemoryProxy(robot.getBroker()).getData(key).toFloat();
}

/** Returns what the last messages of a sonar, a laser and the odometry have to say. */
nlohmann::json measuredBy(session::Session& robot) {
  const auto& sensors = robot.getDescription()->sensorConfigs;
  const auto& beams = sensors.at("FrontLaser").memoryKeys;
  auto ranges = nlohmann::json::array();
  for (std::size_t i = 0; i < beams.size(); i += 2)
    ranges.push_back(std::hypot(inMemory(robot, beams[i]), inMemory(robot, beams[i + 1])));
  const auto& world = *robotOf(robot).getVirtualRobot();
  const Math::Pose2D pose = world.getOdometry();
  const Math::Pose2D velocity = world.getVelocity();
  return {{"range", inMemory(robot, sensors.at("FrontSonar").memoryKeys[0])},
          {"ranges", ranges},
          {"odometry", {pose.x, pose.y, pose.theta}},
          {"velocity", {velocity.x, velocity.y, velocity.theta}}};
}

void recordRobot(const std::string& path, const std::string& measured) {
  session::OpenOptions options;
  options.somebodyAhead = true;
  const auto robot = session::openVirtual("porter", options);
  ros2::SessionRecorder recorder(path, *robot);
  robot->subscribe("samples", robot->getManager().getFamilyNames());
  for (int i = 0; i < 20; ++i) {
    robot->drive(0.1f, 0.2f);
    robot->run(boost::chrono::milliseconds(100));
    recorder.show(robot->look());
  }
  recorder.finish();
  std::ofstream(measured) << measuredBy(*robot);
}

nlohmann::json expectedMessages() {
  auto expected = nlohmann::json::array();
  for (const ros2::MessageType* const type : ros2::getMessageTypes())
    for (const auto& message : {layoutOf(*type).make(), test::fillMessage(*type)})
      expected.push_back({{"topic", "/" + type->getName()},
                          {"schema", type->getName()},
                          {"message", test::toJson(*type, message.get())}});
  return expected;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "ros2_samples FOLDER\n";
    return 2;
  }
  const std::string folder = argv[1];
  writeSamples(folder + "/none.mcap", QV::ros2::Compression::none);
  writeSamples(folder + "/lz4.mcap", QV::ros2::Compression::lz4);
  writeSamples(folder + "/zstd.mcap", QV::ros2::Compression::zstd);
  recordRobot(folder + "/run.mcap", folder + "/measured.json");
  std::ofstream(folder + "/expected.json") << expectedMessages();
}
