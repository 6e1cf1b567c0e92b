#include "robot/maps/internal/yaml_keys.h"

#include <charconv>
#include <cmath>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include <yaml-cpp/eventhandler.h>

#include "robot/internal/file_bytes.h"

namespace QV::robot {
namespace {

// A description is a few lines; an image given in its place is not.
constexpr std::size_t kMostYamlBytes = 1 << 20;

std::optional<double> parseNumber(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  double number = 0.0;
  const char* const limit = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), limit, number);
  if (error != std::errc() || end != limit) return std::nullopt;
  if (!std::isfinite(static_cast<float>(number))) return std::nullopt;
  return number;
}

/**
 * Throws at the beginning of a second document. YAML::LoadAll would not do: after some wrong
 * letters, a lone comma for one, it finds empty documents without an end.
 */
class SingleDocument : public YAML::EventHandler {
 public:
  void OnDocumentStart(const YAML::Mark& mark) override {
    if (hasBegun) throw YAML::ParserException(mark, "a second document begins here");
    hasBegun = true;
  }
  void OnDocumentEnd() override {}
  void OnNull(const YAML::Mark&, YAML::anchor_t) override {}
  void OnAlias(const YAML::Mark&, YAML::anchor_t) override {}
  void OnScalar(const YAML::Mark&, const std::string&, YAML::anchor_t,
                const std::string&) override {}
  void OnSequenceStart(const YAML::Mark&, const std::string&, YAML::anchor_t,
                       YAML::EmitterStyle::value) override {}
  void OnSequenceEnd() override {}
  void OnMapStart(const YAML::Mark&, const std::string&, YAML::anchor_t,
                  YAML::EmitterStyle::value) override {}
  void OnMapEnd() override {}

 private:
  bool hasBegun = false;
};

void checkDocuments(const std::string& text) {
  std::istringstream stream(text);
  YAML::Parser parser(stream);
  SingleDocument documents;
  while (parser.HandleNextDocument(documents)) {
  }
}

std::string describe(const YAML::Node& node) {
  if (node.IsScalar()) return "\"" + node.Scalar() + "\"";
  if (node.IsSequence()) return "a list of " + std::to_string(node.size());
  return "a mapping";
}

}  // namespace

YamlKeys::YamlKeys(const std::filesystem::path& path) : path(path) {
  const YAML::Node root = xParse();
  if (!root.IsMap()) xFail(root.Mark(), "keys and values expected");
  for (const auto& entry : root) {
    if (!entry.first.IsScalar()) xFail(entry.first.Mark(), "a name expected as key");
    const std::string& key = entry.first.Scalar();
    if (entry.second.IsNull()) xFail(entry.first.Mark(), key + ": a value expected, none given");
    if (!nodes.emplace(key, entry.second).second) {
      xFail(entry.first.Mark(), key + ": one such key expected, another given");
    }
  }
}

std::string YamlKeys::getText(const std::string& key) const {
  const YAML::Node node = xGet(key);
  if (!node.IsScalar() || node.Scalar().empty()) xRefuse(key, "text", node);
  return node.Scalar();
}

double YamlKeys::getNumber(const std::string& key, double low, double high,
                           const std::string& expected) const {
  const YAML::Node node = xGet(key);
  const double number = xToNumber(key, node);
  if (number < low || number > high) xRefuse(key, expected, node);
  return number;
}

std::vector<double> YamlKeys::getNumbers(const std::string& key, std::size_t count,
                                         const std::string& expected) const {
  const YAML::Node node = xGet(key);
  if (!node.IsSequence() || node.size() != count) xRefuse(key, expected, node);
  std::vector<double> numbers;
  for (const auto& item : node) numbers.push_back(xToNumber(key, item));
  return numbers;
}

YAML::Node YamlKeys::xParse() const {
  const std::string text = readFile(path, kMostYamlBytes);
  try {
    checkDocuments(text);
    return YAML::Load(text);
  } catch (const YAML::Exception& failure) {
    xFail(failure.mark, "YAML expected: " + failure.msg);
  }
}

YAML::Node YamlKeys::xGet(const std::string& key) const {
  const auto found = nodes.find(key);
  if (found == nodes.end()) xFail(YAML::Mark::null_mark(), key + ": this key expected, none given");
  return found->second;
}

double YamlKeys::xToNumber(const std::string& key, const YAML::Node& node) const {
  const auto number = node.IsScalar() ? parseNumber(node.Scalar()) : std::nullopt;
  if (!number) xRefuse(key, "a finite number", node);
  return *number;
}

void YamlKeys::xRefuse(const std::string& key, const std::string& expected,
                       const YAML::Node& node) const {
  xFail(node.Mark(), key + ": " + expected + " expected, " + describe(node) + " given");
}

void YamlKeys::xFail(const YAML::Mark& mark, const std::string& message) const {
  const std::string line = mark.is_null() ? "" : ":" + std::to_string(mark.line + 1);
  throw std::runtime_error(path.string() + line + ": " + message);
}

}  // namespace QV::robot
