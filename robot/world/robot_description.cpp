#include "robot/world/robot_description.h"

#include <stdexcept>

#include "platform/model/model_utils.h"
#include "robot/internal/file_bytes.h"

namespace QV::robot {
namespace {

constexpr std::size_t kMostXmlBytes = std::size_t{16} << 20;

}  // namespace

RobotDescription::RobotDescription(const std::string& xml, const Model::SensorKinds& kinds)
    : xml(xml), kinds(kinds), model(Model::ModelUtils::robotFromXml(xml, kinds)) {}

RobotDescription RobotDescription::fromFile(const std::string& path,
                                            const Model::SensorKinds& kinds) {
  const std::string xml = readFile(path, kMostXmlBytes);
  try {
    return RobotDescription(xml, kinds);
  } catch (const std::exception& exception) {
    throw std::runtime_error(path + ": " + exception.what());
  }
}

}  // namespace QV::robot
