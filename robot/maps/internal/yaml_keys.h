#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <yaml-cpp/yaml.h>

namespace QV::robot {

/**
 * The keys of a YAML file that is one mapping. yaml-cpp only parses it: it would let a key be given
 * twice, and take ".nan" for a number. Everything throws std::runtime_error that names the file,
 * the line, the key and what was expected.
 */
class YamlKeys {
 public:
  explicit YamlKeys(const std::filesystem::path& path);

  bool has(const std::string& key) const { return nodes.count(key) > 0; }

  std::string getText(const std::string& key) const;
  /** A finite number between two limits, included. */
  double getNumber(const std::string& key, double low, double high,
                   const std::string& expected) const;
  std::vector<double> getNumbers(const std::string& key, std::size_t count,
                                 const std::string& expected) const;

  template <typename Value>
  Value choose(const std::string& key, const std::map<std::string, Value>& values,
               const std::string& expected) const {
    const YAML::Node node = xGet(key);
    const auto found = node.IsScalar() ? values.find(node.Scalar()) : values.end();
    if (found == values.end()) xRefuse(key, expected, node);
    return found->second;
  }

 private:
  YAML::Node xParse() const;
  YAML::Node xGet(const std::string& key) const;
  double xToNumber(const std::string& key, const YAML::Node& node) const;
  [[noreturn]] void xRefuse(const std::string& key, const std::string& expected,
                            const YAML::Node& node) const;
  [[noreturn]] void xFail(const YAML::Mark& mark, const std::string& message) const;

  std::filesystem::path path;
  std::map<std::string, YAML::Node> nodes;
};

}  // namespace QV::robot
