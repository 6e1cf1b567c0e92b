#pragma once

#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/middleware/qv_broker.h"
#include "platform/middleware/qv_memory_proxy.h"

namespace QV {

/**
 * Cached pointers to keys of the shared memory: connecting is slow and done once, a read then costs
 * one load per value.
 *
 * A float list and an int list stand side by side. The type of a connected key is not checked: a
 * key of the other type is read as its bits. The names of the operations begin with capitals, as
 * the interface has them.
 *
 * - Lifetime: the memory module must outlive the pointers.
 * - Threads: one object for one thread at a time; the memory's other users may be anywhere.
 */
class QV_API QVMemoryFastAccess {
 public:
  QVMemoryFastAccess();
  ~QVMemoryFastAccess();

  /** Replaces the float list by `keys`, in their order. A missing key is made with 0 if `safe`;
   * else it is the memory's QVError, and the keys before it stay connected. A missing broker is
   * a QVError unless `keys` is empty. */
  void ConnectToVariables(boost::shared_ptr<QVBroker> broker, const std::vector<std::string>& keys,
                          bool safe);

  /** Replaces the int list, always the safe way; needs a broker that the manager knows. */
  void ConnectToIntVariables(boost::shared_ptr<QVBroker> broker,
                             const std::vector<std::string>& keys);

  /** Sets `out` to the values of all connected keys, in their order. */
  void GetValues(std::vector<float>& out) const;
  void GetValues(std::vector<int>& out) const;

  /** Sets as many connected keys as there are values; surplus keys or values are ignored. */
  void SetValues(const std::vector<float>& in);
  void SetValues(const std::vector<int>& in);

  /** Ends connecting for good: later connects do nothing, connected keys keep working. */
  void StopAllAccess();

  // The rest goes through a proxy each time.

  void insertBuffer(const std::string& key, const QVValue& value);

  /** Asks for the pointer to a key, without a broker from any that the manager knows. The last
   * argument is the interface's and not used. */
  static void* getDataPtr(boost::shared_ptr<QVBroker> broker, const std::string& key, bool);

  /** Returns the value of a key. The caller owns it and deletes it. */
  static QVValue* getBuffer(const std::string& key);

  /**
   * Returns the pointer to a key, made with the default if it is missing or invalid; float or int.
   */
  template <typename T>
  static T* getSafeDataPtr(boost::shared_ptr<QVMemoryProxy> memory, const std::string& key,
                           T defaultValue);

  /** Tests itself: true if three keys of its own read back their values, both ways. */
  static bool InnerTest(boost::shared_ptr<QVBroker> broker);

 private:
  boost::shared_ptr<QVProxy> memoryProxy;
  std::vector<float*> floatPointers;
  std::vector<int*> intPointers;
  bool stopped = false;
};

}  // namespace QV
