#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <shared_mutex>
#include <string>
#include <unordered_map>

#include "platform/api.h"
#include "platform/middleware/qv_value.h"

namespace QV::robot {

/**
 * Values by key. An int or float is kept in 32 bits at an address that stays good as long as the
 * store lives, and that everybody reads and writes through relaxed atomics; other values are kept
 * as they are. Not copyable; thread-safe. Errors are QVErrors of the
 * module "QVMemory" that name the key.
 */
class QV_API MemoryStore {
 public:
  MemoryStore();
  ~MemoryStore();
  MemoryStore(const MemoryStore&) = delete;
  MemoryStore& operator=(const MemoryStore&) = delete;

  /** A key that is not there: QVError. */
  QVValue getData(const std::string& key) const;

  /**
   * The address of an int's or float's 32 bits: the key counts as connected from now on, and keeps
   * its type. A key that is not there or of another type: QVError.
   */
  void* getDataPtr(const std::string& key);

  /** An int beyond 32 bits, or a connected key's type changed: QVError, and nothing is changed. */
  void insertData(const std::string& key, const QVValue& value);

  /** Makes a key that is not there, with the invalid value. */
  void declare(const std::string& key);

  /** All keys and what they hold. */
  std::map<std::string, QVValue> getAll() const;

 private:
  union Cell {
    std::int32_t asInt = 0;
    float asFloat;
  };
  struct Entry {
    // An int or float lives in the cell, and `value` only says which; others live in `value`.
    mutable Cell cell;
    QVValue value;
    mutable std::atomic<bool> connected{false};
  };

  static QVValue xRead(const Entry& entry);
  static void xWrite(Entry& entry, const QVValue& value);
  static void xReplace(Entry& entry, const QVValue& value);
  const Entry& xFind(const std::string& key, const char* method) const;
  bool xInsertInPlace(const std::string& key, const QVValue& value);

  mutable std::shared_mutex mutex;
  // Nodes never move, so neither do cells.
  std::unordered_map<std::string, Entry> entries;
};

}  // namespace QV::robot
