#include "platform/model/internal/xml_reader.h"

#include <cmath>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include <tinyxml2.h>

#include "platform/model/internal/number_text.h"

namespace QV::Model::detail {
namespace {

[[noreturn]] void failAt(int line, const XMLElement& element, const std::string& problem) {
  throw std::runtime_error("robot description, line " + std::to_string(line) + ", <" +
                           element.Name() + ">: " + problem);
}

[[noreturn]] void failAt(const tinyxml2::XMLAttribute& attribute, const XMLElement& element,
                         const std::string& expected) {
  failAt(attribute.GetLineNum(), element,
         "attribute " + std::string(attribute.Name()) + ": " + expected + " expected, " +
             withQuotes(attribute.Value()) + " given");
}

const tinyxml2::XMLAttribute& require(const XMLElement& element, const char* name) {
  const tinyxml2::XMLAttribute* found = element.FindAttribute(name);
  if (!found) fail(element, "an attribute " + std::string(name) + " expected, it has none");
  return *found;
}

std::optional<float> toFloat(std::string_view text) {
  const std::optional<double> number = toNumber(text);
  if (!number || std::isinf(static_cast<float>(*number))) return std::nullopt;
  return static_cast<float>(*number);
}

float toFloat(const XMLElement& element, const tinyxml2::XMLAttribute& attribute) {
  const std::optional<float> number = toFloat(attribute.Value());
  if (!number) failAt(attribute, element, "a number");
  return *number;
}

Math::Position3D toVector(const XMLElement& element, const tinyxml2::XMLAttribute& attribute) {
  std::istringstream words(attribute.Value());
  std::vector<float> numbers;
  for (std::string word; words >> word;) {
    const std::optional<float> number = toFloat(word);
    if (!number) failAt(attribute, element, "3 numbers");
    numbers.push_back(*number);
  }
  if (numbers.size() != 3) failAt(attribute, element, "3 numbers");
  return {numbers[0], numbers[1], numbers[2]};
}

}  // namespace

void fail(const XMLElement& element, const std::string& problem) {
  failAt(element.GetLineNum(), element, problem);
}

void checkCount(const XMLElement& element, std::size_t before) {
  constexpr std::size_t kMost = 10'000;
  if (before >= kMost) fail(element, "at most " + std::to_string(kMost) + " expected, more given");
}

std::string withQuotes(const std::string& text) {
  return '"' + text + '"';
}

std::vector<const XMLElement*> childrenOf(const XMLElement& element, const char* name) {
  std::vector<const XMLElement*> result;
  for (auto* child = element.FirstChildElement(name); child;
       child = child->NextSiblingElement(name)) {
    result.push_back(child);
  }
  return result;
}

const XMLElement* optionalChild(const XMLElement& element, const char* name) {
  const XMLElement* child = element.FirstChildElement(name);
  const XMLElement* second = child ? child->NextSiblingElement(name) : nullptr;
  if (second)
    fail(*second, "one in <" + std::string(element.Name()) + "> expected, a second given");
  return child;
}

const XMLElement& requiredChild(const XMLElement& element, const char* name) {
  const XMLElement* child = optionalChild(element, name);
  if (!child) fail(element, "a <" + std::string(name) + "> expected, it has none");
  return *child;
}

std::optional<std::string> optionalText(const XMLElement& element, const char* attribute) {
  const tinyxml2::XMLAttribute* found = element.FindAttribute(attribute);
  if (!found) return std::nullopt;
  return found->Value();
}

std::string requiredText(const XMLElement& element, const char* attribute) {
  const tinyxml2::XMLAttribute& found = require(element, attribute);
  if (found.Value()[0] == '\0') failAt(found, element, "a text");
  return found.Value();
}

std::string requiredLink(const XMLElement& element, const LinkElements& links) {
  std::string link = requiredText(element, "link");
  if (!links.contains(link)) {
    fail(element, "a link of this robot expected, there is no " + withQuotes(link));
  }
  return link;
}

int requiredInteger(const XMLElement& element, const char* attribute) {
  const tinyxml2::XMLAttribute& found = require(element, attribute);
  const std::optional<int> number = toInteger(found.Value());
  if (!number) failAt(found, element, "an integer");
  return *number;
}

float requiredNumber(const XMLElement& element, const char* attribute) {
  return toFloat(element, require(element, attribute));
}

float numberOr(const XMLElement& element, const char* attribute, float absent) {
  const tinyxml2::XMLAttribute* found = element.FindAttribute(attribute);
  return found ? toFloat(element, *found) : absent;
}

float requiredSize(const XMLElement& element, const char* attribute) {
  const tinyxml2::XMLAttribute& found = require(element, attribute);
  const float size = toFloat(element, found);
  if (size < 0.0f) failAt(found, element, "a number of at least 0");
  return size;
}

std::optional<Math::Position3D> optionalVector(const XMLElement& element, const char* attribute) {
  const tinyxml2::XMLAttribute* found = element.FindAttribute(attribute);
  if (!found) return std::nullopt;
  return toVector(element, *found);
}

Math::Position3D requiredVector(const XMLElement& element, const char* attribute) {
  return toVector(element, require(element, attribute));
}

Math::Transform originOf(const XMLElement& element) {
  const XMLElement* origin = optionalChild(element, "origin");
  if (!origin) return {};
  const Math::Position3D xyz = optionalVector(*origin, "xyz").value_or(Math::Position3D());
  const Math::Position3D rpy = optionalVector(*origin, "rpy").value_or(Math::Position3D());
  return Math::Transform::fromPosition(xyz) * Math::rotationFrom3DRotation(rpy.x, rpy.y, rpy.z);
}

}  // namespace QV::Model::detail
