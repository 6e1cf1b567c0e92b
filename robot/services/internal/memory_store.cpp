#include "robot/services/internal/memory_store.h"

#include <limits>
#include <mutex>

#include "platform/middleware/contracts/memory_contract.h"
#include "platform/middleware/qv_error.h"

namespace QV::robot {
namespace {

constexpr auto kRelaxed = std::memory_order_relaxed;

std::string quoted(const std::string& key) {
  return "key \"" + key + "\"";
}

const char* nameOfType(const QVValue& value) {
  return QVValue::getTypeName(value.getType());
}

bool isKeptInCell(const QVValue& value) {
  return value.isInt() || value.isFloat();
}

void checkRange(const std::string& key, const QVValue& value) {
  if (!value.isInt() || value.toInt() == value.toInt32()) return;
  throw QVError(MemoryContract::kModule, MemoryContract::kInsertData,
                quoted(key) + ": an int of 32 bits expected, " + value.toText() + " given");
}

}  // namespace

MemoryStore::MemoryStore() = default;

MemoryStore::~MemoryStore() = default;

QVValue MemoryStore::getData(const std::string& key) const {
  std::shared_lock<std::shared_mutex> lock(mutex);
  return xRead(xFind(key, MemoryContract::kGetData));
}

void* MemoryStore::getDataPtr(const std::string& key) {
  std::shared_lock<std::shared_mutex> lock(mutex);
  const Entry& entry = xFind(key, MemoryContract::kGetDataPtr);
  if (!isKeptInCell(entry.value)) {
    throw QVError(MemoryContract::kModule, MemoryContract::kGetDataPtr,
                  quoted(key) + ": int or float expected, " + nameOfType(entry.value) + " found");
  }
  entry.connected = true;
  return &entry.cell;
}

void MemoryStore::insertData(const std::string& key, const QVValue& value) {
  checkRange(key, value);
  if (xInsertInPlace(key, value)) return;
  std::lock_guard<std::shared_mutex> lock(mutex);
  Entry& entry = entries[key];
  if (entry.connected && entry.value.getType() != value.getType()) {
    throw QVError(MemoryContract::kModule, MemoryContract::kInsertData,
                  quoted(key) + " is connected: " + nameOfType(entry.value) + " expected, " +
                      nameOfType(value) + " given");
  }
  xReplace(entry, value);
}

void MemoryStore::declare(const std::string& key) {
  std::lock_guard<std::shared_mutex> lock(mutex);
  entries.try_emplace(key);
}

std::map<std::string, QVValue> MemoryStore::getAll() const {
  std::shared_lock<std::shared_mutex> lock(mutex);
  std::map<std::string, QVValue> all;
  for (const auto& [key, entry] : entries) all.emplace(key, xRead(entry));
  return all;
}

QVValue MemoryStore::xRead(const Entry& entry) {
  if (entry.value.isInt()) return std::atomic_ref(entry.cell.asInt).load(kRelaxed);
  if (entry.value.isFloat()) return std::atomic_ref(entry.cell.asFloat).load(kRelaxed);
  return entry.value;
}

void MemoryStore::xWrite(Entry& entry, const QVValue& value) {
  if (value.isInt()) {
    std::atomic_ref(entry.cell.asInt).store(value.toInt32(), kRelaxed);
  } else {
    std::atomic_ref(entry.cell.asFloat).store(value.toFloat(), kRelaxed);
  }
}

void MemoryStore::xReplace(Entry& entry, const QVValue& value) {
  const bool sameType = entry.value.getType() == value.getType();
  entry.value = value;
  if (!isKeptInCell(value)) return;
  if (sameType) return xWrite(entry, value);
  // Nobody is connected to a key whose type changes.
  entry.cell = value.isInt() ? Cell{.asInt = value.toInt32()} : Cell{.asFloat = value.toFloat()};
}

const MemoryStore::Entry& MemoryStore::xFind(const std::string& key, const char* method) const {
  const auto found = entries.find(key);
  if (found == entries.end()) throw QVError(MemoryContract::kModule, method, "no " + quoted(key));
  return found->second;
}

// Numbers that keep their type, the usual case, need no lock against readers.
bool MemoryStore::xInsertInPlace(const std::string& key, const QVValue& value) {
  if (!isKeptInCell(value)) return false;
  std::shared_lock<std::shared_mutex> lock(mutex);
  const auto found = entries.find(key);
  if (found == entries.end() || found->second.value.getType() != value.getType()) return false;
  xWrite(found->second, value);
  return true;
}

}  // namespace QV::robot
