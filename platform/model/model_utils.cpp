#include "platform/model/model_utils.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <tinyxml2.h>

#include "platform/model/internal/joint_reader.h"
#include "platform/model/internal/xml_reader.h"

namespace QV::Model::ModelUtils {
namespace {

using namespace detail;

constexpr std::size_t kMaxBytes = std::size_t{16} << 20;

const XMLElement& parse(const std::string& xml, tinyxml2::XMLDocument& document) {
  if (xml.size() > kMaxBytes) {
    throw std::runtime_error("robot description: at most " + std::to_string(kMaxBytes) +
                             " bytes expected, " + std::to_string(xml.size()) + " given");
  }
  if (document.Parse(xml.data(), xml.size()) != tinyxml2::XML_SUCCESS) {
    throw std::runtime_error("robot description, line " +
                             std::to_string(std::max(1, document.ErrorLineNum())) +
                             ": well-formed XML expected, the parser says " + document.ErrorName());
  }
  const XMLElement* root = document.RootElement();
  if (!root) throw std::runtime_error("robot description, line 1: <robot> expected, no element");
  if (root->Name() != std::string_view("robot")) fail(*root, "<robot> expected");
  if (auto* second = root->NextSiblingElement()) fail(*second, "nothing after </robot> expected");
  return *root;
}

Math::Shape3D shapeOf(const XMLElement& collision) {
  const XMLElement& geometry = requiredChild(collision, "geometry");
  const XMLElement* element = geometry.FirstChildElement();
  if (!element || element->NextSiblingElement()) fail(geometry, "one shape expected");
  const std::string kind = element->Name();
  if (kind == "box") {
    const Math::Position3D size = requiredVector(*element, "size");
    if (std::min({size.x, size.y, size.z}) < 0.0f) {
      fail(*element, "attribute size: numbers of at least 0 expected");
    }
    return Math::Box{size};
  }
  if (kind == "sphere") return Math::Sphere{requiredSize(*element, "radius")};
  if (kind == "cylinder") {
    return Math::Cylinder{requiredSize(*element, "radius"), requiredSize(*element, "length")};
  }
  if (kind == "capsule") {
    return Math::Capsule{requiredSize(*element, "radius"), requiredSize(*element, "length")};
  }
  return Math::UnsupportedShape{kind};
}

/** Reads the parts of a description in the order in which they lean on each other. */
class Reader {
 public:
  explicit Reader(const XMLElement& root) : root(root) {}

  Robot read() {
    robot.name = requiredText(root, "name");
    xReadLinks();
    JointTree tree = readJoints(root, links);
    robot.rootLink = std::move(tree.rootLink);
    robot.joints = std::move(tree.joints);
    if (const XMLElement* kind = optionalChild(root, "kind")) {
      robot.kindCode = requiredInteger(*kind, "code");
    }
    const XMLElement* body = optionalChild(root, "body");
    robot.bodyLink = body ? requiredLink(*body, links) : robot.rootLink;
    xReadShapes();
    for (const XMLElement* sensor : childrenOf(root, "sensor")) {
      if (xIsOurs(*sensor)) xReadSensor(*sensor);
    }
    return std::move(robot);
  }

 private:
  void xReadLinks() {
    for (const XMLElement* element : childrenOf(root, "link")) {
      const std::string name = requiredText(*element, "name");
      if (!links.emplace(name, element).second) {
        fail(*element, "a name of its own expected, another link is called " + quoted(name));
      }
      robot.links.push_back(name);
    }
    if (links.empty()) fail(root, "a <link> expected, it has none");
  }

  void xReadShapes() {
    std::map<std::string, std::string> carriers;
    for (const JointConfig& joint : robot.joints) carriers[joint.childLink] = joint.name;
    for (const auto& [linkName, link] : links) {
      int index = 0;
      for (const XMLElement* collision : childrenOf(*link, "collision")) {
        std::string name = optionalText(*collision, "name").value_or("");
        if (name.empty()) name = linkName + "#" + std::to_string(index);
        ++index;
        xAddShape(*collision, name, carriers[linkName]);
      }
    }
  }

  void xAddShape(const XMLElement& collision, const std::string& name, const std::string& joint) {
    auto shape =
        std::make_shared<CollisionShape>(name, shapeOf(collision), originOf(collision), joint);
    if (!robot.collisionShapes.emplace(name, std::move(shape)).second) {
      fail(collision, "a name of its own expected, another collision is called " + quoted(name));
    }
  }

  // Other tools' sensors have no type, or a word.
  static bool xIsOurs(const XMLElement& sensor) {
    const std::string type = optionalText(sensor, "type").value_or("other");
    return type.empty() || !std::isalpha(static_cast<unsigned char>(type[0]));
  }

  void xReadSensor(const XMLElement& element) {
    SensorConfig config;
    config.name = requiredText(element, "name");
    config.type = requiredInteger(element, "type");
    const XMLElement* parent = optionalChild(element, "parent");
    config.parentLink = parent ? requiredLink(*parent, links) : robot.bodyLink;
    config.origin = originOf(element);
    for (auto* child = element.FirstChildElement(); child; child = child->NextSiblingElement()) {
      xReadSensorPart(*child, config);
    }
    const std::string name = config.name;
    if (!robot.sensorConfigs.emplace(name, std::move(config)).second) {
      fail(element, "a name of its own expected, another sensor is called " + quoted(name));
    }
  }

  static void xReadSensorPart(const XMLElement& element, SensorConfig& config) {
    const std::string kind = element.Name();
    if (kind == "property") {
      const std::string key = requiredText(element, "key");
      const auto value = optionalText(element, "value");
      if (!value) fail(element, "an attribute value expected, it has none");
      if (!config.properties.emplace(key, *value).second) {
        fail(element, "a key of its own expected, " + quoted(key) + " is there twice");
      }
    } else if (kind == "memory_key") {
      config.memoryKeys.push_back(xKeyIn(element));
    } else if (kind != "parent" && kind != "origin") {
      fail(element, "<property>, <memory_key>, <parent> or <origin> expected in <sensor>");
    }
  }

  static std::string xKeyIn(const XMLElement& element) {
    const char* const blanks = " \t\r\n";
    const std::string text = element.GetText() ? element.GetText() : "";
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string::npos) fail(element, "a memory key as its text expected");
    return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
  }

  const XMLElement& root;
  LinkElements links;
  Robot robot;
};

}  // namespace

Robot robotFromXml(const std::string& xml) {
  tinyxml2::XMLDocument document;
  return Reader(parse(xml, document)).read();
}

}  // namespace QV::Model::ModelUtils
