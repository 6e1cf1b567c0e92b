#include <cmath>
#include <deque>
#include <limits>
#include <map>
#include <optional>
#include <set>

#include "platform/ko/simulated_time.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "robot/services/internal/memory_service.h"
#include "tests/support/model_check.h"
#include "tests/support/model_time.h"
#include "tests/support/vocabulary.h"

// Random use of the shared memory and its events, also by who hears them, beside a model of both.
namespace QV::robot::memory_model {
namespace {

const char* const kKeys[] = {"e", "f", "k"};
constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
const QVValue kValues[] = {7,
                           kLeast,
                           -2.5f,
                           0.1,
                           std::nanf(""),
                           true,
                           "text",
                           QVValue::array(1),
                           QVValue::Bytes{1, 2},
                           kLeast - std::int64_t{1}};

enum Kind { insert, connect, poke, declare, raise, subscribe, unsubscribe, come, sleep, fail };

/** What may be done at once, or by who hears an event. */
struct Operation {
  template <typename World>
  void operator()(World& w) const {
    const QVValue& value = kValues[number];
    if (kind == insert) w.insert(key, value);
    if (kind == connect) w.connect(key);
    if (kind == poke) w.poke(key, number);
    if (kind == declare) w.declare(key);
    if (kind == raise) w.raise(key, value);
    if (kind == subscribe) w.subscribe(micro, key, module, value.toText());
    if (kind == unsubscribe) w.unsubscribe(micro, key, module);
    if (kind == come) w.come(module, number > 2);
    if (kind == sleep) w.sleep(1 + number);
    if (kind == fail && number > 4) throw 42;
    if (kind == fail) throw std::runtime_error("broke");
  }
  std::string toText() const { return test::textOf(kind, key, module, number, micro); }

  Kind kind;
  std::string key;
  std::string module;
  int number;
  bool micro;
};

struct World : test::LogWitness {
  void insert(const std::string& key, const QVValue& value) { sut.insertData(key, value); }
  void connect(const std::string& key) {
    void* const pointer = sut.getDataPtr(key);
    if (pointers.emplace(key, pointer).first->second != pointer) see(key + " moved");
  }
  void poke(const std::string& key, int number) {
    if (!pointers.contains(key)) return;
    if (sut.getData(key).isInt()) {
      *static_cast<int*>(pointers[key]) = number;
    } else {
      *static_cast<float*>(pointers[key]) = static_cast<float>(number) + 0.5f;
    }
  }
  void declare(const std::string& key) { sut.declareEvent(key); }
  void raise(const std::string& key, const QVValue& value) { sut.raiseEvent(key, value); }
  void subscribe(bool micro, const std::string& event, const std::string& module,
                 const std::string& message) {
    if (micro) return sut.subscribeToMicroEvent(event, module, message, "onEvent");
    sut.subscribeToEvent(event, module, "onEvent");
  }
  void unsubscribe(bool micro, const std::string& event, const std::string& module) {
    micro ? sut.unsubscribeToMicroEvent(event, module) : sut.unsubscribeToEvent(event, module);
  }
  void come(const std::string& name, bool on) {
    if (!on) return broker->unregisterModule(name);
    const auto module = boost::make_shared<QVModule>(name);
    const auto hear = [this, name](const std::string& event, const QVValue& value,
                                   const std::string& message) {
      see(test::textOf(name, event, value, message));
      if (const auto reaction = reactions.extract(name)) reaction.mapped()(*this);
    };
    module->bindMethod("onEvent", hear);
    broker->registerModule(module);
  }
  void react(const std::string& module, const Operation& operation) {
    reactions[module] = operation;
  }
  void sleep(int ms) { ko::os::msleep(ms); }

  void showState() {
    for (const std::string key : kKeys) {
      const bool heard = service->hasSubscribers(key);
      QVValue value;
      const std::string error = errorOf([&] { value = sut.getData(key); });
      see(test::textOf(key, value, error, heard));
    }
  }

  ko::SimulatedTime time;
  boost::shared_ptr<QVBroker> broker = QVBroker::create();
  boost::shared_ptr<MemoryService> service = boost::make_shared<MemoryService>(broker);
  QVMemoryProxy sut{(broker->registerModule(service), broker)};
  std::map<std::string, void*> pointers;
  std::map<std::string, Operation> reactions;
};

/** An error that names its module already. */
struct NamedError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Model : test::TimeModel<Model>, test::Witness {
  struct Receiver {
    std::string event, module, message, lastFailure;
  };
  struct Subscription {
    bool micro;
    std::string module;
    std::size_t receiver;
    std::size_t strand;
  };
  struct Delivery {
    std::size_t receiver;
    QVValue value;
  };
  struct Strand {
    bool stopped = false;
    bool busy = false;
    std::deque<Delivery> waiting;
  };

  void insert(const std::string& key, const QVValue& value) {
    const std::string named = "insertData: key \"" + key + "\"";
    if (value.isInt() && value.toInt() != value.toInt32())
      refuse(named + ": an int of 32 bits expected, " + value.toText() + " given");
    if (connected.contains(key) && nameOf(value) != nameOf(keys[key]))
      refuse(named + " is connected: " + nameOf(keys[key]) + " expected, " + nameOf(value) +
             " given");
    keys[key] = value.isFloat() ? QVValue(value.toFloat()) : value;
  }
  void connect(const std::string& key) {
    if (!keys.contains(key)) refuse("getDataPtr: no key \"" + key + "\"");
    if (!keys[key].isInt() && !keys[key].isFloat())
      refuse("getDataPtr: key \"" + key + "\": int or float expected, " + nameOf(keys[key]) +
             " found");
    connected.insert(key);
  }
  void poke(const std::string& key, int number) {
    if (!connected.contains(key)) return;
    keys[key] = keys[key].isInt() ? QVValue(number) : QVValue(static_cast<float>(number) + 0.5f);
  }
  void declare(const std::string& key) { keys.emplace(key, QVValue()); }

  void raise(const std::string& event, const QVValue& value) {
    insert(event, value);
    for (const Subscription& s : subscriptions[event]) {
      in(0, [strand = s.strand, delivery = Delivery{s.receiver, value}](Model& model) {
        model.turn(strand, delivery);
      });
    }
  }
  void subscribe(bool micro, const std::string& event, const std::string& module,
                 const std::string& message) {
    declare(event);
    receivers.push_back({event, module, micro ? message : module, ""});
    const auto found = find(micro, event, module);
    if (found != subscriptions[event].end()) {
      found->receiver = receivers.size() - 1;
      return;
    }
    strands.emplace_back();
    subscriptions[event].push_back({micro, module, receivers.size() - 1, strands.size() - 1});
  }
  void unsubscribe(bool micro, const std::string& event, const std::string& module) {
    const auto found = find(micro, event, module);
    if (found == subscriptions[event].end())
      refuse(std::string("unsubscribeTo") + (micro ? "Micro" : "") + "Event: module \"" + module +
             "\" has no subscription to \"" + event + "\"");
    strands[found->strand].stopped = true;
    strands[found->strand].waiting.clear();
    subscriptions[event].erase(found);
  }
  std::vector<Subscription>::iterator find(bool micro, const std::string& event,
                                           const std::string& module) {
    return std::ranges::find_if(subscriptions[event], [&](const Subscription& s) {
      return s.micro == micro && s.module == module;
    });
  }

  void come(const std::string& name, bool on) {
    if (on && !present.insert(name).second)
      throw NamedError("QVBroker::registerModule: module \"" + name + "\" is registered already");
    if (!on && present.erase(name) == 0)
      throw NamedError("QVBroker::unregisterModule: no module \"" + name + "\"");
  }
  void react(const std::string& module, const Operation& operation) {
    reactions[module] = operation;
  }

  void turn(std::size_t strand, const Delivery& delivery) {
    if (strands[strand].stopped) return;
    strands[strand].waiting.push_back(delivery);
    if (strands[strand].busy) return;
    strands[strand].busy = true;
    while (!strands[strand].waiting.empty()) {
      const Delivery next = strands[strand].waiting.front();
      strands[strand].waiting.pop_front();
      const std::string failure = failureOf(next);
      Receiver& receiver = receivers[next.receiver];
      if (std::exchange(receiver.lastFailure, failure) == failure || failure.empty()) continue;
      see("error QVMemory.raiseEvent: Event " + receiver.event + " to " + receiver.module + ": " +
          failure);
    }
    strands[strand].busy = false;
  }
  std::string failureOf(const Delivery& delivery) {
    const Receiver receiver = receivers[delivery.receiver];
    const std::string method = receiver.module + "::onEvent: ";
    if (!present.contains(receiver.module)) return method + "no such module";
    see(test::textOf(receiver.module, receiver.event, delivery.value, receiver.message));
    try {
      if (const auto reaction = reactions.extract(receiver.module)) reaction.mapped()(*this);
    } catch (const NamedError& error) {
      return error.what();
    } catch (const std::exception& error) {
      return method + error.what();
    } catch (...) {
      return "not a standard exception";
    }
    return "";
  }

  void showState() {
    for (const std::string key : kKeys) {
      const std::string error = "QVMemory::getData: no key \"" + key + "\"";
      see(test::textOf(key, keys.contains(key) ? keys[key] : QVValue(),
                       keys.contains(key) ? "" : error, !subscriptions[key].empty()));
    }
  }

  static std::string nameOf(const QVValue& value) { return QVValue::getTypeName(value.getType()); }
  [[noreturn]] static void refuse(const std::string& text) {
    throw NamedError("QVMemory::" + text);
  }

  std::map<std::string, QVValue> keys;
  std::set<std::string> connected, present;
  std::map<std::string, std::vector<Subscription>> subscriptions;
  std::vector<Receiver> receivers;
  std::vector<Strand> strands;
  std::map<std::string, Operation> reactions;
};

test::AnyStep<Model, World> anyStep() {
  const Operation operation{
      *rc::gen::element(insert, insert, connect, poke, declare, raise, raise, raise, raise, raise,
                        raise, subscribe, subscribe, subscribe, unsubscribe, come, come, sleep,
                        sleep, sleep, sleep, sleep, fail, fail, fail),
      *rc::gen::element("e", "e", "e", "f", "k"), *rc::gen::element("A", "A", "B"),
      *rc::gen::inRange(0, 10), *rc::gen::arbitrary<bool>()};
  const std::string module = *rc::gen::element("", "", "", "A", "B");
  return test::makeStep<Model, World>(operation.toText() + module, [=](auto& w) {
    if (module.empty()) operation(w);
    if (!module.empty()) w.react(module, operation);
  });
}

TEST(MemoryModel, keysEventsDeliveriesAndLogAreAsTheModelSays) {
  test::checkModel<Model, World>(anyStep);
}

}  // namespace
}  // namespace QV::robot::memory_model
