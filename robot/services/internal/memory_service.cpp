#include "robot/services/internal/memory_service.h"

#include "platform/middleware/contracts/memory_contract.h"
#include "platform/middleware/qv_error.h"
#include "robot/services/internal/event_board.h"
#include "robot/services/internal/input_listener.h"
#include "robot/services/internal/memory_store.h"

namespace QV::robot {
namespace {

using Kind = EventBoard::Kind;

void unsubscribe(EventBoard& board, const std::string& event, Kind kind,
                 const std::string& module) {
  using namespace MemoryContract;
  if (board.unsubscribe(event, kind, module)) return;
  const bool micro = kind == Kind::microEvent;
  throw QVError(kModule, micro ? kUnsubscribeToMicroEvent : kUnsubscribeToEvent,
                "module \"" + module + "\" has no subscription to \"" + event + "\"");
}

}  // namespace

MemoryService::MemoryService(const boost::shared_ptr<QVBroker>& broker)
    : QVModule(MemoryContract::kModule),
      store(std::make_unique<MemoryStore>()),
      board(std::make_unique<EventBoard>(broker)) {
  xBindMemory();
  xBindEvents();
}

MemoryService::~MemoryService() = default;

void MemoryService::xBindMemory() {
  using namespace MemoryContract;
  bindMethod(kGetData, &MemoryStore::getData, store.get());
  bindMethod(kInsertData, &MemoryService::insertData, this);
  bindMethod(kGetDataPtr, [this](const std::string& key) {
    return reinterpret_cast<std::intptr_t>(store->getDataPtr(key));
  });
}

void MemoryService::xBindEvents() {
  using namespace MemoryContract;
  bindMethod(kDeclareEvent, &MemoryStore::declare, store.get());
  bindMethod(kRaiseEvent, &MemoryService::raiseEvent, this);
  bindMethod(kSubscribeToEvent, [this](const std::string& event, const std::string& module,
                                       const std::string& method) {
    store->declare(event);
    board->subscribe(event, {Kind::event, module, method, module});
  });
  bindMethod(kSubscribeToMicroEvent, [this](const std::string& event, const std::string& module,
                                            const std::string& message, const std::string& method) {
    store->declare(event);
    board->subscribe(event, {Kind::microEvent, module, method, message});
  });
  bindMethod(kUnsubscribeToEvent, [this](const std::string& event, const std::string& module) {
    unsubscribe(*board, event, Kind::event, module);
  });
  bindMethod(kUnsubscribeToMicroEvent, [this](const std::string& event, const std::string& module) {
    unsubscribe(*board, event, Kind::microEvent, module);
  });
}

void MemoryService::raiseEvent(const std::string& event, const QVValue& value) {
  // The lock keeps two events from being stored in one order and delivered in the other.
  std::lock_guard<std::mutex> lock(raising);
  store->insertData(event, value);
  if (InputListener* const hears = listener) hears->onWrite(event, value, true);
  board->raise(event, value);
}

QVValue MemoryService::getData(const std::string& key) const {
  return store->getData(key);
}

void MemoryService::insertData(const std::string& key, const QVValue& value) {
  store->insertData(key, value);
  if (InputListener* const hears = listener) hears->onWrite(key, value, false);
}

void MemoryService::setListener(InputListener* newListener) {
  if (newListener) {
    for (const auto& [key, value] : store->getAll()) newListener->onWrite(key, value, false);
  }
  listener = newListener;
}

void MemoryService::declareEvent(const std::string& event) {
  store->declare(event);
}

bool MemoryService::hasSubscribers(const std::string& event) const {
  return board->hasSubscribers(event);
}

}  // namespace QV::robot
