#include "ros2/recording/internal/viewers_description.h"

#include <array>
#include <cmath>
#include <sstream>
#include <string_view>
#include <vector>

#include <tinyxml2.h>

#include "ros2/recording/internal/renamed_links.h"

namespace QV::ros2 {
namespace {

using tinyxml2::XMLElement;
using Vector = std::array<double, 3>;

Vector vectorOf(const XMLElement* origin, const char* attribute) {
  Vector vector{};
  const char* const text = origin ? origin->Attribute(attribute) : nullptr;
  std::istringstream numbers(text ? text : "");
  numbers >> vector[0] >> vector[1] >> vector[2];
  return vector;
}

/** Returns the point at `distance` (m) along the z axis of `origin`, as text. */
std::string placeOn(const XMLElement* origin, double distance) {
  const auto [x, y, z] = vectorOf(origin, "xyz");
  const auto [roll, pitch, yaw] = vectorOf(origin, "rpy");
  const double ahead = std::sin(pitch) * std::cos(roll);
  std::ostringstream text;
  text.precision(9);
  text << x + distance * (std::cos(yaw) * ahead + std::sin(yaw) * std::sin(roll)) << ' '
       << y + distance * (std::sin(yaw) * ahead - std::cos(yaw) * std::sin(roll)) << ' '
       << z + distance * std::cos(pitch) * std::cos(roll);
  return text.str();
}

XMLElement* shapeOf(XMLElement& body) {
  XMLElement* const geometry = body.FirstChildElement("geometry");
  return geometry ? geometry->FirstChildElement() : nullptr;
}

void addSphere(XMLElement& link, const XMLElement& capsule, double distance) {
  tinyxml2::XMLDocument& document = *link.GetDocument();
  XMLElement& sphere = *capsule.DeepClone(&document)->ToElement();
  sphere.DeleteAttribute("name");
  XMLElement* origin = sphere.FirstChildElement("origin");
  const std::string place = placeOn(origin, distance);
  if (!origin) origin = sphere.InsertFirstChild(document.NewElement("origin"))->ToElement();
  origin->SetAttribute("xyz", place.c_str());
  shapeOf(sphere)->SetName("sphere");
  shapeOf(sphere)->DeleteAttribute("length");
  // The sphere is appended last, because shapes are named by their number.
  link.InsertEndChild(&sphere);
}

/** Replaces the capsules; returns true if there were any. */
bool replaceCapsules(XMLElement& link) {
  std::vector<XMLElement*> capsules;
  for (const char* const sort : {"visual", "collision"}) {
    for (auto* body = link.FirstChildElement(sort); body; body = body->NextSiblingElement(sort)) {
      const XMLElement* const shape = shapeOf(*body);
      if (shape && shape->Name() == std::string_view("capsule")) capsules.push_back(body);
    }
  }
  for (XMLElement* const capsule : capsules) {
    const double half = 0.5 * shapeOf(*capsule)->DoubleAttribute("length");
    addSphere(link, *capsule, half);
    addSphere(link, *capsule, -half);
    shapeOf(*capsule)->SetName("cylinder");
  }
  return !capsules.empty();
}

}  // namespace

std::string describeForViewers(const std::string& urdf, const LinkNames& nameOf) {
  tinyxml2::XMLDocument document;
  if (document.Parse(urdf.data(), urdf.size()) != tinyxml2::XML_SUCCESS) return urdf;
  bool hasChanged = false;
  XMLElement* const robot = document.RootElement();
  for (auto* link = robot ? robot->FirstChildElement("link") : nullptr; link;
       link = link->NextSiblingElement("link"))
    hasChanged = replaceCapsules(*link) || hasChanged;
  if (robot && nameOf) hasChanged = renameLinks(*robot, nameOf) || hasChanged;
  if (!hasChanged) return urdf;
  tinyxml2::XMLPrinter printer;
  document.Print(&printer);
  return printer.CStr();
}

}  // namespace QV::ros2
