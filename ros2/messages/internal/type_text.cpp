#include "ros2/messages/internal/type_text.h"

#include <iomanip>
#include <map>
#include <openssl/sha.h>
#include <set>
#include <sstream>

namespace QV::ros2 {
namespace {

using Layout = MessageLayout;

/** "geometry_msgs/Point" of "geometry_msgs/msg/Point" */
std::string shortNameOf(const std::string& name) {
  return name.substr(0, name.find('/')) + name.substr(name.rfind('/'));
}

std::string markOf(const Field& field) {
  if (field.shape == FieldShape::sequence) return "[]";
  if (field.shape == FieldShape::single) return "";
  std::string mark = "[";
  return mark.append(std::to_string(field.count)).append("]");
}

std::string linesOf(const Layout& layout) {
  std::string text;
  for (const Field& field : layout.fields) {
    text += field.type != nullptr ? shortNameOf(field.type->getName()) : getMsgName(field.kind);
    if (field.stringBound > 0) text += "<=" + std::to_string(field.stringBound);
    text += markOf(field) + " " + field.name + "\n";
  }
  return text;
}

/** Lists each nested type once, by name, followed by its own nested types. */
void appendNeeded(const Layout& layout, std::set<std::string>& known, std::string& text) {
  std::map<std::string, const MessageType*> needed;
  for (const Field& field : layout.fields)
    if (field.type != nullptr) needed[field.type->getName()] = field.type;
  for (const auto& [name, type] : needed) {
    if (!known.insert(name).second) continue;
    text.append(80, '=').append("\nMSG: " + shortNameOf(name) + "\n");
    text += linesOf(layoutOf(*type));
    appendNeeded(layoutOf(*type), known, text);
  }
}

/** The numbers that ROS 2 gives the kinds in its descriptions of types. */
int typeIdOf(const Field& field) {
  constexpr int kIds[] = {15, 16, 3, 2, 6, 7, 8, 10, 11, 17, 1};
  constexpr int kBoundedString = 21;
  constexpr int kShapes[] = {0, 48, 144};
  const int id =
      field.stringBound > 0 ? kBoundedString : kIds[static_cast<std::size_t>(field.kind)];
  return id + kShapes[static_cast<std::size_t>(field.shape)];
}

std::string jsonOf(const Layout& layout) {
  std::string text = R"({"type_name": ")" + layout.name + R"(", "fields": [)";
  for (const Field& field : layout.fields) {
    if (&field != &layout.fields.front()) text += ", ";
    const std::size_t capacity = field.shape == FieldShape::array ? field.count : 0;
    text += R"({"name": ")" + field.name + R"(", "type": {"type_id": )" +
            std::to_string(typeIdOf(field)) + R"(, "capacity": )" + std::to_string(capacity) +
            R"(, "string_capacity": )" + std::to_string(field.stringBound) +
            R"(, "nested_type_name": ")" + (field.type ? field.type->getName() : "") + R"("}})";
  }
  return text + "]}";
}

void collectNeeded(const Layout& layout, std::map<std::string, const Layout*>& needed) {
  for (const Field& field : layout.fields) {
    if (field.type == nullptr || needed.contains(field.type->getName())) continue;
    needed[field.type->getName()] = &layoutOf(*field.type);
    collectNeeded(layoutOf(*field.type), needed);
  }
}

}  // namespace

std::string ddsNameOf(const std::string& name) {
  return name.substr(0, name.find('/')) + "::msg::dds_::" + name.substr(name.rfind('/') + 1) + "_";
}

std::string schemaOf(const Layout& layout) {
  std::string text = linesOf(layout);
  std::set<std::string> known;
  appendNeeded(layout, known, text);
  return text;
}

std::string hashOf(const Layout& layout) {
  std::map<std::string, const Layout*> needed;
  collectNeeded(layout, needed);
  std::string text =
      R"({"type_description": )" + jsonOf(layout) + R"(, "referenced_type_descriptions": [)";
  for (const auto& [name, type] : needed) {
    if (name != needed.begin()->first) text += ", ";
    text += jsonOf(*type);
  }
  text += "]}";
  unsigned char digest[SHA256_DIGEST_LENGTH];
  SHA256(reinterpret_cast<const unsigned char*>(text.data()), text.size(), digest);
  std::ostringstream hash;
  hash << "RIHS01_" << std::hex << std::setfill('0');
  for (const unsigned char byte : digest) hash << std::setw(2) << int{byte};
  return hash.str();
}

}  // namespace QV::ros2
