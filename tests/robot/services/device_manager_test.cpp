#include "robot/services/internal/device_manager.h"

#include "platform/ko/simulated_time.h"
#include "platform/middleware/dcm_proxy.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "tests/support/broker_with_memory.h"
#include "tests/support/log_capture.h"
#include "tests/support/vocabulary.h"

namespace QV::robot {
namespace {

constexpr std::int64_t kHalfTurnMs = std::int64_t{1} << 31;

/** A value and its time, in milliseconds from now. */
using Timed = std::pair<QVValue, int>;

struct DeviceManagerTest : testing::Test {
  DeviceManagerTest() {
    broker->registerModule(manager);
    dcm = boost::make_shared<DCMProxy>(broker);
  }

  void set(const std::string& key, const std::string& mode, const std::vector<Timed>& values) {
    std::vector<QVValue> list;
    for (const auto& [value, offset] : values) {
      list.push_back(QVValue::array(value, dcm->getTime(offset)));
    }
    dcm->set(QVValue::array(key, mode, list));
  }

  /** Writes down, from here on, what happens to `key`, as "key=value@milliseconds". */
  void record(const std::string& key) {
    manager->setActuatorHandler(key, [this](const std::string& name, const QVValue& value) {
      happened.push_back(name + "=" + value.toText() + "@" + std::to_string(dcm->getTime(0)));
    });
  }

  ko::SimulatedTime time;
  boost::shared_ptr<QVBroker> broker = test::brokerWithMemory();
  boost::shared_ptr<DeviceManager> manager = boost::make_shared<DeviceManager>(broker);
  boost::shared_ptr<DCMProxy> dcm;
  QVMemoryProxy memory{broker};
  std::vector<std::string> happened;
};

TEST_F(DeviceManagerTest, valuesTakeEffectInOrderOfTimeAndThenOfSetting) {
  record("a");
  record("b");
  set("a", "Merge", {{3, 30}, {1, 10}});
  set("b", "Merge", {{1, 10}, {2, 20}});
  set("a", "Merge", {{2, 10}});
  time.advance(milliseconds(50));
  EXPECT_THAT(happened, ElementsAre("a=1@10", "b=1@10", "a=2@10", "b=2@20", "a=3@30"));
}

TEST_F(DeviceManagerTest, theUpdateModeDecidesWhichPendingValuesAreDropped) {
  struct Case {
    std::string mode;
    std::vector<Timed> values;
    std::vector<std::string> expected;
  };
  const Case cases[] = {
      {"Merge", {{9, 20}}, {"a=1@10", "a=2@20", "a=9@20", "a=3@30"}},
      {"ClearAll", {{9, 20}}, {"a=9@20"}},
      {"ClearAll", {}, {}},
      {"ClearAfter", {{9, 20}}, {"a=1@10", "a=9@20"}},
      {"ClearAfter", {{9, 25}, {8, 15}}, {"a=1@10", "a=8@15", "a=9@25"}},
      {"ClearAfter", {}, {"a=1@10", "a=2@20", "a=3@30"}},
      {"ClearBefore", {{9, 20}}, {"a=9@20", "a=3@30"}},
      {"ClearBefore", {{9, 25}, {8, 15}}, {"a=8@15", "a=9@25", "a=3@30"}},
  };
  record("a");
  record("other");
  for (const Case& c : cases) {
    const std::int32_t start = dcm->getTime(0);
    happened.clear();
    set("other", "Merge", {{0, 40}});
    set("a", "Merge", {{1, 10}, {2, 20}, {3, 30}});
    set("a", c.mode, c.values);
    time.advance(milliseconds(50));
    std::vector<std::string> expected;
    for (const std::string& line : c.expected) {
      const auto at = line.find('@') + 1;
      expected.push_back(line.substr(0, at) + std::to_string(start + std::stoi(line.substr(at))));
    }
    expected.push_back("other=0@" + std::to_string(start + 40));
    EXPECT_EQ(happened, expected) << c.mode;
  }
}

TEST_F(DeviceManagerTest, timesAreReadAcrossThe32BitOverflow) {
  const std::pair<std::string, std::string> expected[] = {{"2147483643", "-2147483643"},
                                                          {"-5", "5"}};
  record("a");
  for (int halfTurn = 1; halfTurn <= 4; ++halfTurn) {
    const auto& [before, after] = expected[(halfTurn + 1) % 2];
    happened.clear();
    time.advanceTo(ko::Clock::time_point(milliseconds(halfTurn * kHalfTurnMs - 5)));
    set("a", "Merge", {{1, 10}, {2, -1}});
    EXPECT_THAT(happened, ElementsAre("a=2@" + before));
    time.advance(milliseconds(9));
    EXPECT_EQ(happened.size(), 1u);
    time.advance(milliseconds(1));
    EXPECT_THAT(happened, ElementsAre("a=2@" + before, "a=1@" + after));
  }
}

TEST_F(DeviceManagerTest, aMalformedCommandIsRefusedWhole) {
  const std::string prefix = "DCM::set: ";
  const std::string shape = "[key, mode, [[value, time], ...]] expected, ";
  const std::string pair = "key \"a\": [number, 32-bit time in milliseconds] expected, ";
  const QVValue good = QVValue::array(1, 0);
  const auto command = [](QVValue::Array list) { return QVValue::array("a", "Merge", list); };
  const std::pair<QVValue, std::string> cases[] = {
      {"a", shape + "\"a\" given"},
      {QVValue::array("a", "Merge"), shape + "[\"a\", \"Merge\"] given"},
      {QVValue::array(1, "Merge", QVValue::array()), shape + "[1, \"Merge\", []] given"},
      {QVValue::array("a", "Merge", 1), shape + "[\"a\", \"Merge\", 1] given"},
      {QVValue::array("a", "Clear", QVValue::array()),
       "key \"a\": Merge, ClearAll, ClearAfter or ClearBefore expected, \"Clear\" given"},
      {command({good, 1}), pair + "1 given"},
      {command({good, QVValue::array(1)}), pair + "[1] given"},
      {command({good, QVValue::array("1", 0)}), pair + "[\"1\", 0] given"},
      {command({good, QVValue::array(1, 0.0f)}), pair + "[1, 0.0] given"},
      {command({good, QVValue::array(1, kHalfTurnMs)}), pair + "[1, 2147483648] given"},
  };
  record("a");
  for (const auto& [value, expected] : cases) {
    EXPECT_EQ(errorOf([&, &given = value] { dcm->set(given); }), prefix + expected);
  }
  time.advance(milliseconds(10));
  EXPECT_THAT(happened, ElementsAre());
}

TEST_F(DeviceManagerTest, aHandlerMaySetOtherActuators) {
  record("b");
  manager->setActuatorHandler("a", [this](const std::string&, const QVValue& value) {
    set("b", "Merge", {{value, 0}, {value, 5}});
  });
  set("a", "Merge", {{1, 0}, {2, 10}});
  time.advance(milliseconds(20));
  EXPECT_THAT(happened, ElementsAre("b=1@0", "b=1@5", "b=2@10", "b=2@15"));
}

TEST_F(DeviceManagerTest, aFailingHandlerIsLoggedAndTheOthersTakeEffect) {
  test::LogCapture log;
  manager->setActuatorHandler(
      "a", [](const std::string&, const QVValue&) { throw std::runtime_error("jammed"); });
  memory.insertData("b", 1);
  memory.getDataPtr("b");
  set("a", "Merge", {{1, 0}, {2, 5}});
  set("b", "Merge", {{1.5f, 5}, {7, 6}});
  time.advance(milliseconds(10));
  EXPECT_THAT(log.lines(),
              ElementsAre("error DCM.set: Actuator a: jammed", "error DCM.set: Actuator a: jammed",
                          "error DCM.set: Actuator b: QVMemory::insertData: key \"b\" is "
                          "connected: int expected, float given"));
  EXPECT_EQ(memory.getData("b"), QVValue(7));
}

TEST_F(DeviceManagerTest, pendingValuesAreDroppedWithTheManager) {
  record("a");
  set("a", "Merge", {{1, 10}});
  broker->unregisterModule("DCM");
  manager.reset();
  time.advance(milliseconds(20));
  EXPECT_THAT(happened, ElementsAre());
}

}  // namespace
}  // namespace QV::robot
