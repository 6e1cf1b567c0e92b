#include "robot/services/memory_service.h"

#include "platform/middleware/qv_error.h"

namespace QV::robot {

typedef EventBoard::Kind Kind;

MemoryService::MemoryService(const boost::shared_ptr<QVBroker>& broker)
    : QVModule("QVMemory"), board(broker) {
  xBindMemory();
  xBindEvents();
}

MemoryService::~MemoryService() = default;

void MemoryService::xBindMemory() {
  bindMethod("getData", &MemoryStore::getData, &store);
  bindMethod("insertData", &MemoryStore::insertData, &store);
  bindMethod("getDataPtr", [this](const std::string& key) {
    return reinterpret_cast<std::intptr_t>(store.getDataPtr(key));
  });
}

void MemoryService::xBindEvents() {
  bindMethod("declareEvent", &MemoryStore::declare, &store);
  bindMethod("raiseEvent", &MemoryService::raiseEvent, this);
  bindMethod("subscribeToEvent", [this](const std::string& event, const std::string& module,
                                        const std::string& method) {
    xSubscribe(event, {Kind::event, module, method, module});
  });
  bindMethod("subscribeToMicroEvent",
             [this](const std::string& event, const std::string& module, const std::string& message,
                    const std::string& method) {
               xSubscribe(event, {Kind::microEvent, module, method, message});
             });
  bindMethod("unsubscribeToEvent", [this](const std::string& event, const std::string& module) {
    xUnsubscribe(event, Kind::event, module);
  });
  bindMethod("unsubscribeToMicroEvent",
             [this](const std::string& event, const std::string& module) {
               xUnsubscribe(event, Kind::microEvent, module);
             });
}

void MemoryService::raiseEvent(const std::string& event, const QVValue& value) {
  // Or two at once might be stored in one order and delivered in the other.
  std::lock_guard<std::mutex> lock(raising);
  store.insertData(event, value);
  board.raise(event, value);
}

void MemoryService::xSubscribe(const std::string& event, const EventBoard::Subscriber& subscriber) {
  store.declare(event);
  board.subscribe(event, subscriber);
}

void MemoryService::xUnsubscribe(const std::string& event, Kind kind, const std::string& module) {
  if (board.unsubscribe(event, kind, module)) return;
  const bool micro = kind == Kind::microEvent;
  throw QVError("QVMemory", micro ? "unsubscribeToMicroEvent" : "unsubscribeToEvent",
                "module \"" + module + "\" has no subscription to \"" + event + "\"");
}

}  // namespace QV::robot
