#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/middleware/qv_broker.h"
#include "platform/middleware/qv_module.h"
#include "platform/middleware/qv_value.h"

namespace QV::robot {

class EventBoard;
class InputListener;
class MemoryStore;

/**
 * The shared memory and its events, module "QVMemory"; QVMemoryProxy says what its methods do. An
 * event has the key of its name: raising sets it, and the last value delivered is the one it keeps.
 * Methods of subscribers are called through `broker`, which is looked for the module at each event.
 * A subscriber that fails is logged when its failure changes, and the next event tries again; of
 * 1000 events that wait for one that hangs, the oldest make room, which is logged. It writes no key
 * of its own.
 */
class QV_API MemoryService : public QVModule {
 public:
  explicit MemoryService(const boost::shared_ptr<QVBroker>& broker);
  /** Waits for events that are being delivered. */
  ~MemoryService() override;

  // The robot itself calls these, without the broker. Thread-safe; errors are QVMemoryProxy's.

  QVValue getData(const std::string& key) const;
  void insertData(const std::string& key, const QVValue& value);
  /** Creates the key of an event that nobody has raised yet. */
  void declareEvent(const std::string& event);
  void raiseEvent(const std::string& event, const QVValue& value);
  bool hasSubscribers(const std::string& event) const;

  /** Sets the listener: it gets all present keys, then all writes. It must outlive that; null
   * removes it. */
  void setListener(InputListener* newListener);

 private:
  void xBindMemory();
  void xBindEvents();

  const std::unique_ptr<MemoryStore> store;
  const std::unique_ptr<EventBoard> board;
  std::mutex raising;
  std::atomic<InputListener*> listener{nullptr};
};

}  // namespace QV::robot
