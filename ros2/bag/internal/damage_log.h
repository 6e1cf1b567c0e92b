#pragma once

#include <set>
#include <string>

#include "ros2/bag/bag_reader.h"

namespace QV::ros2 {

/**
 * Counts the unreadable places of one file, each once. It remembers kMostPlaces of them; later only
 * a place behind all others is surely new, and is counted.
 */
class QV_API DamageLog {
 public:
  static constexpr std::size_t kMostPlaces = 10'000;

  explicit DamageLog(const std::string& path) : path(path) {}

  void addChunk(std::uint64_t byte, const std::string& what);
  void addMessages(std::uint64_t byte, std::uint64_t count, const std::string& what);
  void add(std::uint64_t byte, const std::string& what);

  const BagDamage& get() const { return damage; }

 private:
  bool xIsNew(std::uint64_t byte);
  bool xAdd(std::uint64_t byte, const std::string& what);

  const std::string path;
  std::set<std::uint64_t> places;
  /** The farthest of all, remembered or not. */
  std::uint64_t farthest = 0;
  BagDamage damage;
};

}  // namespace QV::ros2
