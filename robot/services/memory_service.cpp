#include "robot/services/memory_service.h"

#include "platform/middleware/qv_error.h"
#include "robot/services/internal/event_board.h"
#include "robot/services/internal/memory_store.h"

namespace QV::robot {
namespace {

using Kind = EventBoard::Kind;

void unsubscribe(EventBoard& board, const std::string& event, Kind kind,
                 const std::string& module) {
  if (board.unsubscribe(event, kind, module)) return;
  const bool micro = kind == Kind::microEvent;
  throw QVError("QVMemory", micro ? "unsubscribeToMicroEvent" : "unsubscribeToEvent",
                "module \"" + module + "\" has no subscription to \"" + event + "\"");
}

}  // namespace

MemoryService::MemoryService(const boost::shared_ptr<QVBroker>& broker)
    : QVModule("QVMemory"),
      store(std::make_unique<MemoryStore>()),
      board(std::make_unique<EventBoard>(broker)) {
  xBindMemory();
  xBindEvents();
}

MemoryService::~MemoryService() = default;

void MemoryService::xBindMemory() {
  bindMethod("getData", &MemoryStore::getData, store.get());
  bindMethod("insertData", &MemoryStore::insertData, store.get());
  bindMethod("getDataPtr", [this](const std::string& key) {
    return reinterpret_cast<std::intptr_t>(store->getDataPtr(key));
  });
}

void MemoryService::xBindEvents() {
  bindMethod("declareEvent", &MemoryStore::declare, store.get());
  bindMethod("raiseEvent", &MemoryService::raiseEvent, this);
  bindMethod("subscribeToEvent", [this](const std::string& event, const std::string& module,
                                        const std::string& method) {
    store->declare(event);
    board->subscribe(event, {Kind::event, module, method, module});
  });
  bindMethod("subscribeToMicroEvent",
             [this](const std::string& event, const std::string& module, const std::string& message,
                    const std::string& method) {
               store->declare(event);
               board->subscribe(event, {Kind::microEvent, module, method, message});
             });
  bindMethod("unsubscribeToEvent", [this](const std::string& event, const std::string& module) {
    unsubscribe(*board, event, Kind::event, module);
  });
  bindMethod("unsubscribeToMicroEvent",
             [this](const std::string& event, const std::string& module) {
               unsubscribe(*board, event, Kind::microEvent, module);
             });
}

void MemoryService::raiseEvent(const std::string& event, const QVValue& value) {
  // Or two at once might be stored in one order and delivered in the other.
  std::lock_guard<std::mutex> lock(raising);
  store->insertData(event, value);
  board->raise(event, value);
}

QVValue MemoryService::getData(const std::string& key) const {
  return store->getData(key);
}

void MemoryService::insertData(const std::string& key, const QVValue& value) {
  store->insertData(key, value);
}

void MemoryService::declareEvent(const std::string& event) {
  store->declare(event);
}

bool MemoryService::hasSubscribers(const std::string& event) const {
  return board->hasSubscribers(event);
}

}  // namespace QV::robot
