#include "ros2/recording/internal/renamed_links.h"

#include <set>
#include <string>

namespace QV::ros2 {
namespace {

using tinyxml2::XMLElement;

std::string textOf(const XMLElement& element, const char* attribute) {
  const char* const text = element.Attribute(attribute);
  return text ? text : "";
}

/** Calls `visit` with each child element of this name. */
template <typename Visit>
void forEach(XMLElement& parent, const char* name, const Visit& visit) {
  for (auto* child = parent.FirstChildElement(name); child; child = child->NextSiblingElement(name))
    visit(*child);
}

class Renaming {
 public:
  Renaming(XMLElement& robot, const LinkNames& nameOf) : nameOf(nameOf) {
    for (const char* const sort : {"sensor", "joint"})
      forEach(robot, sort, [this](const auto& part) { parts.insert(textOf(part, "name")); });
    forEach(robot, "link", [this](auto& link) { xRename(link, "name"); });
    forEach(robot, "body", [this](auto& body) { xRename(body, "link"); });
    forEach(robot, "gazebo", [this](auto& gazebo) { xRename(gazebo, "reference"); });
    for (const char* const sort : {"sensor", "joint"})
      forEach(robot, sort, [this](auto& part) { xRenameIn(part); });
  }

  bool hasChanged = false;

 private:
  void xRename(XMLElement& element, const char* attribute) {
    const std::string old = textOf(element, attribute);
    const std::string renamed = nameOf(old);
    if (renamed == old) return;
    element.SetAttribute(attribute, renamed.c_str());
    hasChanged = true;
  }

  void xRenameIn(XMLElement& part) {
    for (const char* const end : {"parent", "child"})
      forEach(part, end, [this](auto& link) { xRename(link, "link"); });
    // It may name a sensor or a joint, too, and these come first.
    forEach(part, "property", [this](auto& property) {
      const bool isFrame = textOf(property, "key") == "cameraName";
      if (isFrame && parts.count(textOf(property, "value")) == 0) xRename(property, "value");
    });
  }

  const LinkNames& nameOf;
  std::set<std::string> parts;
};

}  // namespace

bool renameLinks(XMLElement& robot, const LinkNames& nameOf) {
  return Renaming(robot, nameOf).hasChanged;
}

}  // namespace QV::ros2
