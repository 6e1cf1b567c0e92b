// Writes recordings with a message of every type to a folder, and beside them what is in these
// messages.

#include <fstream>
#include <iostream>

#include "ros2/bag/bag_writer.h"
#include "ros2/recording/run_recorder.h"
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
    // One as it is made, and one full of values.
    type->encode(type->getLayout().make().get(), cdr);
    writer.write(topic, time + 500, time, cdr);
    type->encode(test::fillMessage(*type).get(), cdr);
    writer.write(topic, time + 1000, time, cdr);
    time += 1000;
  }
  writer.addAttachment({"map.pgm", "image/x-portable-graymap", time, 0, ros2::Bytes(1000, 7)});
  writer.close();
}

void recordRobot(const std::string& path) {
  session::OpenOptions options;
  options.somebodyAhead = true;
  const auto robot = session::openVirtual("porter", options);
  ros2::RunRecorder recorder(path, *robot);
  robot->subscribe("samples", robot->getManager().getFamilyNames());
  for (int i = 0; i < 20; ++i) {
    robot->run(boost::chrono::milliseconds(100));
    recorder.show(robot->look());
  }
  recorder.finish();
}

nlohmann::json expectedMessages() {
  auto expected = nlohmann::json::array();
  for (const ros2::MessageType* const type : ros2::getMessageTypes())
    for (const auto& message : {type->getLayout().make(), test::fillMessage(*type)})
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
  recordRobot(folder + "/run.mcap");
  std::ofstream(folder + "/expected.json") << expectedMessages();
}
