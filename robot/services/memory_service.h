#pragma once

#include <mutex>
#include <string>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/middleware/qv_module.h"
#include "robot/services/internal/event_board.h"
#include "robot/services/internal/memory_store.h"

namespace QV::robot {

/**
 * The shared memory and its events, module "QVMemory"; QVMemoryProxy says what its methods do. An
 * event has the key of its name: raising sets it, and the last value delivered is the one it keeps.
 * Methods of subscribers are called through `broker`, which is looked for the module at each event.
 * A subscriber that fails is logged when its failure changes, and the next event tries again. It
 * writes no key of its own.
 */
class QV_API MemoryService : public QVModule {
 public:
  explicit MemoryService(const boost::shared_ptr<QVBroker>& broker);
  /** Waits for events that are being delivered. */
  ~MemoryService() override;

  // For the robot itself, past the broker. Safe from any thread.

  MemoryStore& getStore() { return store; }
  void raiseEvent(const std::string& event, const QVValue& value);
  bool hasSubscribers(const std::string& event) const { return board.hasSubscribers(event); }

 private:
  void xBindMemory();
  void xBindEvents();
  void xSubscribe(const std::string& event, const EventBoard::Subscriber& subscriber);
  void xUnsubscribe(const std::string& event, EventBoard::Kind kind, const std::string& module);

  MemoryStore store;
  EventBoard board;
  std::mutex raising;
};

}  // namespace QV::robot
