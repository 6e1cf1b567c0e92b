#include "platform/model/model_utils.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <tinyxml2.h>

#include "platform/model/internal/attribute_limit.h"
#include "platform/model/internal/joint_reader.h"
#include "platform/model/internal/sensor_reader.h"
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
  checkAttributeCounts(xml);
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
  Reader(const XMLElement& root, const SensorKinds& kinds) : root(root), kinds(kinds) {}

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
    SensorReader(kinds, links, robot).read(root);
    return std::move(robot);
  }

 private:
  void xReadLinks() {
    for (const XMLElement* element : childrenOf(root, "link")) {
      checkCount(*element, links.size());
      const std::string name = requiredText(*element, "name");
      if (!links.emplace(name, element).second) {
        fail(*element, "a name of its own expected, another link is called " + withQuotes(name));
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
    checkCount(collision, robot.collisionShapes.size());
    auto shape =
        std::make_shared<CollisionShape>(name, shapeOf(collision), originOf(collision), joint);
    if (!robot.collisionShapes.emplace(name, std::move(shape)).second) {
      fail(collision,
           "a name of its own expected, another collision is called " + withQuotes(name));
    }
  }

  const XMLElement& root;
  const SensorKinds& kinds;
  LinkElements links;
  Robot robot;
};

}  // namespace

Robot robotFromXml(const std::string& xml, const SensorKinds& kinds) {
  tinyxml2::XMLDocument document;
  return Reader(parse(xml, document), kinds).read();
}

}  // namespace QV::Model::ModelUtils
