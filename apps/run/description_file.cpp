#include "apps/run/description_file.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "apps/usage_error.h"
#include "platform/model/model_utils.h"

namespace QV::app {

Model::Robot readDescription(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file || std::filesystem::is_directory(path)) {
    throw UsageError(path + ": a robot description expected, can't be read");
  }
  const std::string xml{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  try {
    return Model::ModelUtils::robotFromXml(xml);
  } catch (const std::exception& exception) {
    throw UsageError(path + ": " + exception.what());
  }
}

}  // namespace QV::app
