#pragma once

#include <set>
#include <string>

#include "ros2/bag/bag_reader.h"

namespace QV::ros2 {

/** Counts what can't be read of one file, each place once. */
class DamageLog {
 public:
  explicit DamageLog(const std::string& path) : path(path) {}

  void addChunk(std::uint64_t byte, const std::string& what);
  void addMessages(std::uint64_t byte, std::uint64_t count, const std::string& what);
  void add(std::uint64_t byte, const std::string& what);

  const BagDamage& get() const { return damage; }

 private:
  bool xAdd(std::uint64_t byte, const std::string& what);

  const std::string path;
  std::set<std::uint64_t> places;
  BagDamage damage;
};

}  // namespace QV::ros2
