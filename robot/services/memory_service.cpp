#include "robot/services/memory_service.h"

#include "platform/middleware/contracts/memory_contract.h"
#include "platform/middleware/qv_error.h"

namespace QV::robot {

typedef EventBoard::Kind Kind;

MemoryService::MemoryService(const boost::shared_ptr<QVBroker>& broker)
    : QVModule(MemoryContract::kModule), board(broker) {
  xBindMemory();
  xBindEvents();
}

MemoryService::~MemoryService() = default;

void MemoryService::xBindMemory() {
  using namespace MemoryContract;
  bindMethod(kGetData, &MemoryStore::getData, &store);
  bindMethod(kInsertData, &MemoryStore::insertData, &store);
  bindMethod(kGetDataPtr, [this](const std::string& key) {
    return reinterpret_cast<std::intptr_t>(store.getDataPtr(key));
  });
}

void MemoryService::xBindEvents() {
  using namespace MemoryContract;
  bindMethod(kDeclareEvent, &MemoryStore::declare, &store);
  bindMethod(kRaiseEvent, &MemoryService::raiseEvent, this);
  bindMethod(kSubscribeToEvent, [this](const std::string& event, const std::string& module,
                                       const std::string& method) {
    xSubscribe(event, {Kind::event, module, method, module});
  });
  bindMethod(kSubscribeToMicroEvent, [this](const std::string& event, const std::string& module,
                                            const std::string& message, const std::string& method) {
    xSubscribe(event, {Kind::microEvent, module, method, message});
  });
  bindMethod(kUnsubscribeToEvent, [this](const std::string& event, const std::string& module) {
    xUnsubscribe(event, Kind::event, module);
  });
  bindMethod(kUnsubscribeToMicroEvent, [this](const std::string& event, const std::string& module) {
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
  using namespace MemoryContract;
  if (board.unsubscribe(event, kind, module)) return;
  const bool micro = kind == Kind::microEvent;
  throw QVError(kModule, micro ? kUnsubscribeToMicroEvent : kUnsubscribeToEvent,
                "module \"" + module + "\" has no subscription to \"" + event + "\"");
}

}  // namespace QV::robot
