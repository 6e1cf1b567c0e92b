#include "ros2/bag/internal/damage_log.h"

#include <algorithm>
#include <utility>

namespace QV::ros2 {

void DamageLog::addChunk(std::uint64_t byte, const std::string& what) {
  if (xAdd(byte, "chunk skipped: " + what)) ++damage.chunks;
}

void DamageLog::addMessages(std::uint64_t byte, std::uint64_t count, const std::string& what) {
  if (xAdd(byte, std::to_string(count) + " messages skipped: " + what)) damage.messages += count;
}

void DamageLog::add(std::uint64_t byte, const std::string& what) {
  xAdd(byte, what);
}

bool DamageLog::xIsNew(std::uint64_t byte) {
  const std::uint64_t before = std::exchange(farthest, std::max(farthest, byte));
  if (places.size() < kMostPlaces) return places.insert(byte).second;
  return byte > before;
}

bool DamageLog::xAdd(std::uint64_t byte, const std::string& what) {
  if (!xIsNew(byte)) return false;
  if (damage.lines.size() < BagDamage::kMostLines)
    damage.lines.push_back(path + ": byte " + std::to_string(byte) + ": " + what);
  return true;
}

}  // namespace QV::ros2
