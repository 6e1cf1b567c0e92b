#include "sensor/real/qv_memory_fast_access.h"

#include <memory>

#include "platform/middleware/qv_error.h"
#include "tests/support/broker_with_memory.h"
#include "tests/support/vocabulary.h"

namespace QV {
namespace {

/** A memory that has the same number under every key but for two that it fails to read. */
struct ForgetfulMemory : QVModule {
  ForgetfulMemory() : QVModule("QVMemory") {
    bindMethod("getData", [this](const std::string& key) {
      if (key == "foreign") throw 42;
      if (key == "standard") throw std::runtime_error("unreadable");
      return number;
    });
    bindMethod("insertData", [this](const std::string&, const QVValue&) { ++inserted; });
    bindMethod("getDataPtr",
               [this](const std::string&) { return reinterpret_cast<std::intptr_t>(&number); });
  }
  float number = 1.5f;
  int inserted = 0;
};

struct QVMemoryFastAccessTest : testing::Test {
  std::vector<float> floats() const {
    std::vector<float> values{-1, -1};
    sut.GetValues(values);
    return values;
  }
  std::vector<int> ints() const {
    std::vector<int> values{-1, -1};
    sut.GetValues(values);
    return values;
  }

  boost::shared_ptr<QVBroker> broker = test::brokerWithMemory();
  QVMemoryProxy memory{broker};
  QVMemoryFastAccess sut;
};

TEST_F(QVMemoryFastAccessTest, readsThePresentValues) {
  memory.insertData("a", 1.5f);
  memory.insertData("n", 7);
  sut.ConnectToVariables(broker, {"b", "a"}, true);
  sut.ConnectToIntVariables(broker, {"n", "m"});
  EXPECT_THAT(floats(), ElementsAre(0.0f, 1.5f));
  EXPECT_THAT(ints(), ElementsAre(7, 0));
  EXPECT_EQ(memory.getData("b"), QVValue(0.0f));
  EXPECT_EQ(memory.getData("m"), QVValue(0));
  memory.insertData("b", -2.5f);
  memory.insertData("m", -3);
  EXPECT_THAT(floats(), ElementsAre(-2.5f, 1.5f));
  EXPECT_THAT(ints(), ElementsAre(7, -3));
}

TEST_F(QVMemoryFastAccessTest, anyNumberOfKeysIsReadInItsOrder) {
  std::vector<std::string> keys;
  std::vector<float> expected;
  for (int n = 1; n <= 9; ++n) {
    keys.push_back("key" + std::to_string(n));
    expected.push_back(static_cast<float>(n) / 4);
    memory.insertData(keys.back(), expected.back());
    sut.ConnectToVariables(broker, keys, false);
    EXPECT_EQ(floats(), expected);
  }
}

TEST_F(QVMemoryFastAccessTest, writesTheSmallerNumberOfKeysAndValues) {
  sut.ConnectToVariables(broker, {"a", "b"}, true);
  sut.ConnectToIntVariables(broker, {"m", "n"});
  sut.SetValues(std::vector<float>{1, 2, 3});
  sut.SetValues(std::vector<int>{4, 5, 6});
  EXPECT_EQ(memory.getData("b"), QVValue(2.0f));
  EXPECT_EQ(memory.getData("n"), QVValue(5));
  sut.SetValues(std::vector<float>{9});
  sut.SetValues(std::vector<int>{8});
  sut.SetValues(std::vector<int>{});
  EXPECT_THAT(floats(), ElementsAre(9.0f, 2.0f));
  EXPECT_THAT(ints(), ElementsAre(8, 5));
}

TEST_F(QVMemoryFastAccessTest, connectingReplacesOneListAndLeavesTheOther) {
  EXPECT_THAT(floats(), ElementsAre());
  sut.ConnectToVariables(broker, {"a", "b"}, true);
  sut.ConnectToIntVariables(broker, {"m"});
  sut.ConnectToVariables(broker, {"c"}, true);
  EXPECT_THAT(floats(), ElementsAre(0.0f));
  EXPECT_THAT(ints(), ElementsAre(0));
  sut.ConnectToIntVariables(broker, {});
  EXPECT_THAT(ints(), ElementsAre());
  EXPECT_THAT(floats(), ElementsAre(0.0f));
}

TEST_F(QVMemoryFastAccessTest, afterAStopNoNewKeysConnectAndConnectedKeysStay) {
  sut.ConnectToVariables(broker, {"a"}, true);
  sut.StopAllAccess();
  sut.ConnectToVariables(broker, {"b", "c"}, true);
  sut.ConnectToVariables(nullptr, {"b"}, true);
  sut.ConnectToIntVariables(broker, {"m"});
  memory.insertData("a", 3.5f);
  EXPECT_THAT(floats(), ElementsAre(3.5f));
  EXPECT_THAT(ints(), ElementsAre());
  EXPECT_THROW(memory.getData("b"), QVError);
}

TEST_F(QVMemoryFastAccessTest, anUnsafeConnectionStopsAtAMissingKey) {
  memory.insertData("a", 1.5f);
  memory.insertData("c", 2.5f);
  EXPECT_EQ(errorOf([&] {
              sut.ConnectToVariables(broker, {"a", "b", "c"}, false);
            }),
            "QVMemory::getDataPtr: no key \"b\"");
  EXPECT_THAT(floats(), ElementsAre(1.5f));
  EXPECT_THROW(memory.getData("b"), QVError);
}

TEST_F(QVMemoryFastAccessTest, aSafeConnectionGivesAnEventKeyAValueButRefusesAStringKey) {
  memory.declareEvent("event");
  memory.insertData("text", "words");
  sut.ConnectToVariables(broker, {"event"}, true);
  EXPECT_EQ(memory.getData("event"), QVValue(0.0f));
  EXPECT_EQ(errorOf([&] {
              sut.ConnectToIntVariables(broker, {"event", "text"});
            }),
            "QVMemory::getDataPtr: key \"text\": int or float expected, string found");
  EXPECT_EQ(memory.getData("text"), QVValue("words"));
}

TEST_F(QVMemoryFastAccessTest, aKeyIsCreatedOnlyIfReadingThrowsAStandardException) {
  const auto other = QVBroker::create();
  const auto forgetful = boost::make_shared<ForgetfulMemory>();
  other->registerModule(forgetful);
  EXPECT_THROW(sut.ConnectToVariables(other, {"foreign"}, true), int);
  EXPECT_EQ(forgetful->inserted, 0);
  sut.ConnectToVariables(other, {"standard"}, true);
  EXPECT_EQ(forgetful->inserted, 1);
}

TEST_F(QVMemoryFastAccessTest, aMissingBrokerOrMemoryIsAnError) {
  sut.ConnectToVariables(nullptr, {}, true);
  EXPECT_EQ(errorOf([&] { sut.ConnectToVariables(nullptr, {"a"}, true); }),
            "QVMemoryFastAccess::ConnectToVariables: no broker given");
  EXPECT_EQ(errorOf([&] { sut.ConnectToIntVariables(nullptr, {"a"}); }),
            "QVMemoryFastAccess::ConnectToIntVariables: no broker given");
  EXPECT_EQ(errorOf([&] { sut.ConnectToVariables(QVBroker::create(), {}, true); }),
            "QVProxy::QVProxy: no module \"QVMemory\"");
}

TEST(QVMemoryFastAccess, anIntListTakesItsFirstProxyFromAnyBroker) {
  const auto unknown = boost::make_shared<QVBroker>();
  unknown->registerModule(boost::make_shared<robot::MemoryService>(unknown));
  QVMemoryFastAccess sut;
  EXPECT_EQ(errorOf([&] { sut.ConnectToIntVariables(unknown, {"n"}); }),
            "QVBrokerManager::getRandomBroker: no broker is registered");
  sut.ConnectToVariables(unknown, {}, true);
  sut.ConnectToIntVariables(unknown, {"n"});
  std::vector<int> values;
  sut.GetValues(values);
  EXPECT_THAT(values, ElementsAre(0));
}

TEST_F(QVMemoryFastAccessTest, oneShotOperationsGoThroughAnyBroker) {
  sut.insertBuffer("key", 4);
  const std::unique_ptr<QVValue> value(QVMemoryFastAccess::getBuffer("key"));
  EXPECT_EQ(*value, QVValue(4));
  EXPECT_THROW(QVMemoryFastAccess::getBuffer("none"), QVError);
  void* const expected = memory.getDataPtr("key");
  EXPECT_EQ(QVMemoryFastAccess::getDataPtr(nullptr, "key", false), expected);
  EXPECT_EQ(QVMemoryFastAccess::getDataPtr(broker, "key", true), expected);
}

TEST_F(QVMemoryFastAccessTest, theSelfTestNamesTheFault) {
  EXPECT_TRUE(QVMemoryFastAccess::InnerTest(broker));
  EXPECT_TRUE(QVMemoryFastAccess::InnerTest(broker));
  EXPECT_EQ(errorOf([] { QVMemoryFastAccess::InnerTest(nullptr); }),
            "QVMemoryFastAccess::InnerTest:: pBroker was NULL");
  EXPECT_EQ(errorOf([] { QVMemoryFastAccess::InnerTest(QVBroker::create()); }),
            "QVMemoryFastAccess::InnerTest: When creating memory proxy: "
            "QVProxy::QVProxy: no module \"QVMemory\"");
}

TEST(QVMemoryFastAccess, theSelfTestFailsIfTheMemoryLosesValues) {
  const auto broker = QVBroker::create();
  broker->registerModule(boost::make_shared<ForgetfulMemory>());
  EXPECT_FALSE(QVMemoryFastAccess::InnerTest(broker));
}

}  // namespace
}  // namespace QV
