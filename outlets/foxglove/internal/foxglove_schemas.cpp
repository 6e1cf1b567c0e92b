#include "outlets/foxglove/internal/foxglove_schemas.h"

#include <map>

#include <nlohmann/json.hpp>

namespace QV::outlets::foxglove {
namespace {

using nlohmann::ordered_json;

// Our messages have all properties, always.
ordered_json object(const ordered_json& properties) {
  auto required = ordered_json::array();
  for (const auto& [name, schema] : properties.items()) required.push_back(name);
  return {{"type", "object"}, {"properties", properties}, {"required", required}};
}

const ordered_json kNumber = {{"type", "number"}};
const ordered_json kInteger = {{"type", "integer"}};
const ordered_json kText = {{"type", "string"}};
const ordered_json kBytes = {{"type", "string"}, {"contentEncoding", "base64"}};
const ordered_json kTime = object({{"sec", kInteger}, {"nsec", kInteger}});
const ordered_json kVector = object({{"x", kNumber}, {"y", kNumber}, {"z", kNumber}});
const ordered_json kTurn = object({{"x", kNumber}, {"y", kNumber}, {"z", kNumber}, {"w", kNumber}});
const ordered_json kPose = object({{"position", kVector}, {"orientation", kTurn}});
// `type` counts the types of numbers: 1 is an unsigned byte, 7 a float of 32 bits.
const ordered_json kFields = {
    {"type", "array"},
    {"items", object({{"name", kText}, {"offset", kInteger}, {"type", kInteger}})}};

ordered_json listOf(const ordered_json& items) {
  return {{"type", "array"}, {"items", items}};
}

const ordered_json kFlag = {{"type", "boolean"}};
const ordered_json kColour =
    object({{"r", kNumber}, {"g", kNumber}, {"b", kNumber}, {"a", kNumber}});
const ordered_json kLine = object({{"type", kInteger},
                                   {"pose", kPose},
                                   {"thickness", kNumber},
                                   {"scale_invariant", kFlag},
                                   {"points", listOf(kVector)},
                                   {"color", kColour},
                                   {"colors", listOf(kColour)},
                                   {"indices", listOf(kInteger)}});

// Our scenes have lines only; the lists of everything else are empty.
ordered_json entity() {
  ordered_json properties = {{"timestamp", kTime},
                             {"frame_id", kText},
                             {"id", kText},
                             {"lifetime", kTime},
                             {"frame_locked", kFlag}};
  for (const char* none :
       {"metadata", "arrows", "cubes", "spheres", "cylinders", "triangles", "texts", "models"}) {
    properties[none] = listOf({{"type", "object"}});
  }
  properties["lines"] = listOf(kLine);
  return object(properties);
}

const std::map<std::string, ordered_json>& schemas() {
  static const std::map<std::string, ordered_json> all = {
      {"foxglove.FrameTransform", object({{"timestamp", kTime},
                                          {"parent_frame_id", kText},
                                          {"child_frame_id", kText},
                                          {"translation", kVector},
                                          {"rotation", kTurn}})},
      {"foxglove.Grid", object({{"timestamp", kTime},
                                {"frame_id", kText},
                                {"pose", kPose},
                                {"column_count", kInteger},
                                {"cell_size", object({{"x", kNumber}, {"y", kNumber}})},
                                {"row_stride", kInteger},
                                {"cell_stride", kInteger},
                                {"fields", kFields},
                                {"data", kBytes}})},
      {"foxglove.Log", object({{"timestamp", kTime},
                               {"level", kInteger},
                               {"message", kText},
                               {"name", kText},
                               {"file", kText},
                               {"line", kInteger}})},
      {"foxglove.SceneUpdate",
       object({{"deletions", listOf({{"type", "object"}})}, {"entities", listOf(entity())}})},
      {"foxglove.RawImage", object({{"timestamp", kTime},
                                    {"frame_id", kText},
                                    {"width", kInteger},
                                    {"height", kInteger},
                                    {"encoding", kText},
                                    {"step", kInteger},
                                    {"data", kBytes}})},
      {"foxglove.PointCloud", object({{"timestamp", kTime},
                                      {"frame_id", kText},
                                      {"pose", kPose},
                                      {"point_stride", kInteger},
                                      {"fields", kFields},
                                      {"data", kBytes}})}};
  return all;
}

}  // namespace

std::string schemaText(const std::string& name) {
  return schemas().at(name).dump();
}

}  // namespace QV::outlets::foxglove
