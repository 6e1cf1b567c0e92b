#include "ros2/bag/bag_reader.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <malloc.h>
#include <numeric>
#include <sqlite3.h>
#include <tuple>

#include <gmock/gmock.h>

#include "ros2/bag/internal/bag_file.h"
#include "ros2/bag/internal/compression.h"
#include "ros2/bag/internal/damage_log.h"
#include "ros2/bag/internal/mcap_records.h"
#include "tests/ros2/bag/small_bag.h"

namespace QV::ros2 {
namespace {

using test::kSecond;
using test::numbersFrom;
using test::numbersIn;
using test::SmallBag;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::uint8_t kChunk = 6;
constexpr std::size_t kHead = 9;
constexpr std::size_t kFooter = 29 + 8;

/** The bytes of a recording, to be damaged. */
struct Damaged {
  std::string bytes;

  template <typename Number>
  Number get(std::size_t place) const {
    Number number;
    std::memcpy(&number, bytes.data() + place, sizeof number);
    return number;
  }
  template <typename Number>
  void put(std::size_t place, Number number) {
    std::memcpy(bytes.data() + place, &number, sizeof number);
  }
  /** Finds where the record `index` of that kind begins. */
  std::size_t find(std::uint8_t op, int index) const {
    std::size_t place = 8;
    while (get<std::uint8_t>(place) != op || index-- > 0)
      place += kHead + get<std::uint64_t>(place + 1);
    return place;
  }
  std::size_t summary() const { return get<std::uint64_t>(bytes.size() - kFooter + kHead); }
  void dropSummary() { bytes.resize(summary() - 13); }
  void dropSummaryCrc() { put(bytes.size() - 12, 0u); }
};

struct BagReaderTest : testing::Test {
  /** Ten messages in each of ten chunks. */
  Damaged make(Compression compression = Compression::none) {
    SmallBag(path, {compression, std::size_t{1} << 20, kSecond}).write(100);
    return {test::readBytes(path)};
  }
  void write(const Damaged& damaged) { folder.write("run.mcap", damaged.bytes); }

  const test::TemporaryFolder folder;
  const std::string path = folder / "run.mcap";
};

/** All messages but those of the second chunk. */
std::vector<int> withoutSecondChunk() {
  std::vector<int> numbers = numbersFrom(0, 99);
  numbers.erase(numbers.begin() + 10, numbers.begin() + 20);
  return numbers;
}

TEST_F(BagReaderTest, aDamagedChunkIsSkippedAndCounted) {
  const Damaged whole = make(Compression::zstd);
  const std::size_t second = whole.find(kChunk, 1);
  const std::size_t packed = second + kHead + 44;
  using Damage = std::function<void(Damaged&)>;
  const std::pair<Damage, const char*> kDamages[] = {
      {[&](Damaged& file) { file.bytes[packed + 60] ^= 1; }, ""},
      {[&](Damaged& file) { file.put(second + kHead + 24, 1u); }, "CRC is wrong"},
      {[&](Damaged& file) { file.bytes[second + kHead + 32] = 'Z'; },
       "compression zstd, lz4 or none expected, \"Zstd\" given"},
      {[&](Damaged& file) { file.put(second + kHead + 36, ~std::uint64_t{0}); }, ""},
      {[&](Damaged& file) { file.put(second + kHead + 16, std::uint64_t{5} << 30); },
       "up to 536870912 bytes expected, 5368709120 given"},
      {[&](Damaged& file) { file.put(second + kHead + 16, std::uint64_t{9}); }, "zstd: "}};
  for (const bool indexed : {true, false}) {
    for (const auto& [damage, text] : kDamages) {
      Damaged file = whole;
      damage(file);
      if (!indexed) file.dropSummary();
      write(file);
      BagReader sut(path);
      EXPECT_EQ(numbersIn(sut), withoutSecondChunk());
      EXPECT_EQ(sut.getDamage().chunks, 1u);
      const std::string expected =
          path + ": byte " + std::to_string(second) + ": chunk skipped: " + text;
      EXPECT_THAT(sut.getDamage().lines, testing::Contains(HasSubstr(expected)));
    }
  }
}

// A decoder is content with the beginning of a frame.
TEST_F(BagReaderTest, packedBytesAreUnpackedAsAWholeOrNotAtAll) {
  const Bytes bytes(1000, 7);
  for (const auto compression : {Compression::none, Compression::lz4, Compression::zstd}) {
    Packer packer(compression);
    const BytesView view = packer.pack(bytes);
    const Bytes packed(view.begin(), view.end());
    const auto unpacked = [&](int more, std::size_t room) {
      Bytes given = packed;
      given.resize(packed.size() + static_cast<std::size_t>(more));
      Bytes result(room);
      unpack(getName(compression), given, result);
      return result;
    };
    EXPECT_EQ(unpacked(0, 1000), bytes);
    for (const auto& [more, room] : {std::pair(-1, 1000), {1, 1000}, {0, 999}, {0, 1001}})
      EXPECT_THROW(unpacked(more, room), std::runtime_error)
          << getName(compression) << " " << more << " " << room;
  }
}

TEST_F(BagReaderTest, aDamagedAttachmentIsSkipped) {
  {
    BagWriter writer(path);
    for (const char* const name : {"first", "second"})
      writer.addAttachment({name, "text/plain", 0, 0, {'a', 'b', 'c'}});
  }
  std::string bytes = test::readBytes(path);
  bytes[bytes.find("abc") + 1] = 'x';
  folder.write("run.mcap", bytes);
  BagReader sut(path);
  ASSERT_EQ(sut.getAttachmentCount(), 2u);
  EXPECT_FALSE(sut.readAttachment(0));
  EXPECT_EQ(sut.readAttachment(1)->name, "second");
  EXPECT_THAT(sut.getDamage().lines, ElementsAre(HasSubstr("attachment skipped: CRC is wrong")));
}

TEST_F(BagReaderTest, anInvalidSummaryIsIgnored) {
  const Damaged whole = make();
  const std::size_t index = whole.find(8, 3) + kHead;
  using Damage = std::function<void(Damaged&)>;
  const std::pair<Damage, const char*> kDamages[] = {
      {[&](Damaged& file) { file.bytes[index] ^= 1; }, "the summary's CRC is wrong"},
      {[&](Damaged& file) { file.put(index + 16, std::uint64_t{1} << 60); },
       "a chunk outside of the data"},
      {[&](Damaged& file) { file.put(index + 24, ~std::uint64_t{0}); },
       "a chunk outside of the data"},
      {[&](Damaged& file) { file.put(index + 16, std::uint64_t{whole.find(kChunk, 0) + 9}); },
       "chunks overlap"},
      {[&](Damaged& file) { file.put(index + 24, std::uint64_t{20}); },
       "no chunk where the index says"},
      {[&](Damaged& file) { file.bytes[index - kHead] = 0x70; },
       "the index does not list all chunks"},
      {[&](Damaged& file) { file.put(file.bytes.size() - kFooter + kHead, ~std::uint64_t{0}); },
       "no summary"},
      {[&](Damaged& file) { file.put(index - 8, ~std::uint64_t{0}); }, "bytes expected"}};
  for (const auto& [damage, text] : kDamages) {
    Damaged file = whole;
    damage(file);
    if (text != kDamages[0].second) file.dropSummaryCrc();
    write(file);
    BagReader sut(path);
    EXPECT_EQ(numbersIn(sut), numbersFrom(0, 99)) << text;
    EXPECT_THAT(sut.getDamage().lines, ElementsAre(HasSubstr(text)));
  }
}

TEST_F(BagReaderTest, aWrongLengthLosesOnlyOneChunk) {
  const Damaged whole = make();
  const std::size_t second = whole.find(kChunk, 1);
  for (const bool indexed : {true, false}) {
    for (const std::uint64_t lie : {std::uint64_t{0}, std::uint64_t{40}, std::uint64_t{5000},
                                    std::uint64_t{1} << 40, ~std::uint64_t{0}}) {
      Damaged file = whole;
      file.put(second + 1, lie);
      if (!indexed) file.dropSummary();
      write(file);
      BagReader sut(path);
      EXPECT_EQ(numbersIn(sut), withoutSecondChunk()) << lie;
      EXPECT_EQ(sut.getDamage().chunks, 1u) << lie;
    }
  }
}

TEST_F(BagReaderTest, theCrcOverAllDataFindsWhatNoOtherOneCovers) {
  Damaged file = make();
  // The time in an index behind a chunk.
  file.put(file.find(7, 0) + kHead + 6, std::uint8_t{77});
  write(file);
  EXPECT_THAT(readBagInfo(path).damage.lines,
              ElementsAre(HasSubstr("the CRC of the data section is wrong")));
}

TEST_F(BagReaderTest, aDataEndRecordThatIsTooLongCountsAsDamage) {
  constexpr std::uint64_t kLength = 1500;
  Damaged damaged = make();
  damaged.dropSummary();
  const std::size_t end = damaged.bytes.size();
  damaged.bytes.resize(end + kHead + kLength);
  damaged.put(end, std::uint8_t{15});
  damaged.put(end + 1, kLength);
  write(damaged);
  const BagInfo info = readBagInfo(path);
  EXPECT_EQ(info.count, 100u);
  EXPECT_THAT(info.damage.lines.back(), HasSubstr("a record of up to 1024 bytes expected"));
}

TEST_F(BagReaderTest, aCutAnywhereKeepsThePartBeforeIt) {
  const Damaged whole = make();
  std::size_t before = 0;
  for (std::size_t size = 8; size < whole.bytes.size(); size += 17) {
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(whole.bytes.data());
    const Bytes cut(bytes, bytes + size);
    const auto sut = openMcap(openMemory(cut), "cut", BagOrder::time);
    const std::vector<int> numbers = numbersIn(*sut);
    ASSERT_EQ(numbers, numbersFrom(0, static_cast<int>(numbers.size()) - 1));
    ASSERT_GE(numbers.size(), before);
    ASSERT_FALSE(sut->getDamage().lines.empty());
    before = numbers.size();
  }
  EXPECT_EQ(before, 100u);
}

TEST_F(BagReaderTest, aFlippedBitAnywhereGivesNothingThatWasNotWritten) {
  const Damaged whole = make(Compression::lz4);
  for (std::size_t place = 8; place < whole.bytes.size(); place += 5) {
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(whole.bytes.data());
    Bytes flipped(bytes, bytes + whole.bytes.size());
    flipped[place] ^= static_cast<std::uint8_t>(1 << place % 8);
    const auto sut = openMcap(openMemory(flipped), "flipped", BagOrder::time);
    const std::vector<int> numbers = numbersIn(*sut);
    ASSERT_THAT(numbers, testing::Not(testing::Contains(-1))) << place;
    ASSERT_GE(numbers.size(), 90u) << place;
  }
}

TEST_F(BagReaderTest, messagesOutOfOrderComeInOrderInBoundedMemory) {
  std::vector<std::uint64_t> times(5000);
  {
    BagWriter writer(path, {Compression::none, 2000, ~std::uint64_t{0}});
    const auto topic = writer.addTopic(makeBagTopic("/text", std_msgs::String::getType()));
    for (std::size_t i = 0; i < times.size(); ++i)
      writer.write(topic, times[i] = i * 7919 % times.size(), std_msgs::String{std::to_string(i)});
  }
  // All of its chunks overlap, one at a time may be open, and the index is longer than a chunk.
  const auto sut = openMcap(openFile(path), path, BagOrder::time, {4000, 1});
  const std::size_t before = mallinfo2().uordblks;
  for (std::size_t time = 0; time < times.size(); ++time) {
    const auto message = sut->next();
    ASSERT_TRUE(message);
    ASSERT_LT(mallinfo2().uordblks, before + 60'000);
    ASSERT_EQ(message->logTime, time);
    const auto text = fromCdr<std_msgs::String>(message->data).data;
    ASSERT_EQ(times[std::stoul(text)], time);
  }
  EXPECT_FALSE(sut->next());
  EXPECT_THAT(sut->getDamage().lines, testing::IsEmpty());
  sut->seek(4321);
  EXPECT_EQ(sut->next()->logTime, 4321u);
  sut->seek(5000);
  EXPECT_FALSE(sut->next());
}

TEST_F(BagReaderTest, messagesBeforeTheirChannelRecordKeepTheirOrder) {
  const mcap::Schema schema{1, "std_msgs/msg/String", "ros2msg", "string data\n"};
  const auto write = [](Bytes& bytes, std::uint16_t channel, std::uint64_t time) {
    append(bytes, mcap::Message{channel, 0, time, time, {}});
  };
  Bytes bytes(mcap::kMagic.begin(), mcap::kMagic.end());
  append(bytes, schema);
  append(bytes, mcap::Channel{1, 1, "/early", "cdr", {}});
  write(bytes, 1, 10);
  write(bytes, 2, 1);
  append(bytes, mcap::Metadata{"between", {}});
  write(bytes, 1, 5);
  write(bytes, 3, 2);
  append(bytes, mcap::Channel{2, 1, "/late", "cdr", {}});

  const auto sut = openMcap(openMemory(bytes), "bag", BagOrder::time);
  std::vector<std::uint64_t> times;
  while (const auto message = sut->next()) times.push_back(message->logTime);
  EXPECT_THAT(times, ElementsAre(1, 5, 10));
  EXPECT_EQ(sut->getTimes().start, 1u);
  EXPECT_EQ(sut->getDamage().messages, 1u);
}

// A few bytes in a file must not cost many in memory, nor again and again.
TEST_F(BagReaderTest, hugeMetadataIsRefusedAndTheMessagesAreRead) {
  const std::string words(1000, 'x');
  Bytes bytes(mcap::kMagic.begin(), mcap::kMagic.end());
  append(bytes, mcap::Schema{1, "std_msgs/msg/String", "ros2msg", words});
  for (std::uint16_t channel = 0; channel < 8; ++channel) {
    append(bytes, mcap::Metadata{"text", {{words, words}}});
    append(bytes, mcap::Channel{channel, 1, "/topic", "cdr", {}});
    append(bytes, mcap::Message{channel, 0, channel, channel, {}});
  }
  constexpr std::uint64_t kMost = ~std::uint64_t{0};
  const std::tuple<McapLimits, std::size_t, std::size_t, const char*> kCases[] = {
      {{}, 8, 8, "no magic at the end"},
      {{kMost, kMost, 5000}, 3, 2, "schemas and channels of up to 5000 bytes expected, more given"},
      {{kMost, kMost, kMost, 8},
       4,
       5,
       "reading stopped here: up to 8 chunks, metadata and attachments expected, more given"}};
  for (const auto& [limits, messages, metadata, text] : kCases) {
    const auto sut = openMcap(openMemory(bytes), "bag", BagOrder::time, limits);
    std::size_t count = 0;
    while (sut->next()) ++count;
    EXPECT_EQ(count, messages) << text;
    EXPECT_EQ(sut->getMetadata().size(), metadata) << text;
    EXPECT_THAT(sut->getDamage().lines, testing::Contains(HasSubstr(text)));
  }
}

// The shortest messages take more in memory than in the file.
TEST_F(BagReaderTest, aChunkOfMoreMessagesThanThereIsRoomForIsSkipped) {
  constexpr std::uint64_t kMost = 8000;
  const auto read = [&](int messages) {
    {
      BagWriter writer(path, {Compression::none});
      const auto topic = writer.addTopic(makeBagTopic("/empty", std_msgs::String::getType()));
      for (int i = 0; i < messages; ++i) writer.write(topic, 1, 1, {});
    }
    const auto sut = openMcap(openFile(path), path, BagOrder::time, {kMost, kMost});
    int count = 0;
    while (sut->next()) ++count;
    return std::pair(count, sut->getDamage().lines);
  };
  EXPECT_THAT(read(200), testing::Pair(200, testing::IsEmpty()));
  EXPECT_THAT(read(201),
              testing::Pair(0, ElementsAre(HasSubstr("up to 200 messages expected, more given"))));
}

void makeDatabase(const std::string& path, const std::string& text) {
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open(path.c_str(), &database), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(database, text.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(database);
}

TEST_F(BagReaderTest, aDatabaseGivesItsMessagesInTheOrderOfTime) {
  const std::string file = folder / "bag.db3";
  makeDatabase(
      file,
      "CREATE TABLE topics(id INTEGER PRIMARY KEY, name, type, serialization_format);"
      "CREATE TABLE messages(id INTEGER PRIMARY KEY, topic_id, timestamp, data);"
      "INSERT INTO topics VALUES (1, '/text', 'std_msgs/msg/String', 'cdr');"
      "INSERT INTO messages VALUES (1, 1, 30, x'03'), (2, 1, 10, x'01'), (3, 9, 15, x'09'),"
      "(4, 1, 20, x'02'), (5, 1, 20, NULL);");
  BagReader sut(file);
  std::vector<std::pair<std::uint64_t, Bytes>> messages;
  while (const auto message = sut.next())
    messages.emplace_back(message->logTime, Bytes(message->data.begin(), message->data.end()));
  using testing::Pair;
  EXPECT_THAT(messages, ElementsAre(Pair(10, Bytes{1}), Pair(20, Bytes{2}), Pair(20, Bytes{}),
                                    Pair(30, Bytes{3})));
  EXPECT_EQ(sut.getDamage().messages, 1u);
  sut.seek(20);
  EXPECT_EQ(sut.next()->data[0], 2);
}

/** A recording in SQLite whose topics are made as they are read: `bytes` each. */
void writeSwelling(const std::string& path, int topics, int bytes) {
  std::string text =
      "CREATE TABLE messages(id INTEGER PRIMARY KEY, topic_id, timestamp, data);"
      "CREATE TABLE topics(id INTEGER PRIMARY KEY, type TEXT, name TEXT GENERATED "
      "ALWAYS AS (hex(zeroblob(" +
      std::to_string(bytes / 2) + "))) VIRTUAL);";
  for (int i = 0; i < topics; ++i) text += "INSERT INTO topics(type) VALUES ('a');";
  makeDatabase(path, text);
}

TEST_F(BagReaderTest, topicsThatSwellAreRefused) {
  const std::string file = folder / "bag.db3";
  writeSwelling(file, 20, 4'000'000);
  EXPECT_THAT([&] { BagReader sut(file); },
              testing::ThrowsMessage<std::runtime_error>(
                  file + ": topics of up to 67108864 bytes expected, more given"));
  const std::string other = folder / "other.db3";
  writeSwelling(other, 1, 70'000'000);
  EXPECT_THAT([&] { BagReader sut(other); }, testing::ThrowsMessage<std::runtime_error>(
                                                 other + ": its topics: string or blob too big"));
}

TEST_F(BagReaderTest, damageIsCountedOnceAndDoesNotFillTheMemory) {
  DamageLog sut("bag");
  const std::uint64_t most = 3 * DamageLog::kMostPlaces;
  for (int reading = 0; reading < 2; ++reading) {
    for (std::uint64_t place = 0; place < most; ++place) sut.addChunk(2 * place, "bad");
  }
  // Of those that are not remembered it can't be told from one that was counted.
  sut.addChunk(1, "bad");
  EXPECT_EQ(sut.get().chunks, most);
  EXPECT_EQ(sut.get().lines.size(), BagDamage::kMostLines);
}

TEST_F(BagReaderTest, infoCountsRatesAndGaps) {
  {
    SmallBag bag(path);
    bag.write(21);
    for (const std::uint64_t second : {20, 21})
      bag.writer.write(bag.texts, second * kSecond, std_msgs::String{"late"});
    bag.writer.addTopic(makeBagTopic("/silent", std_msgs::String::getType()));
  }
  const BagInfo sut = readBagInfo(path);
  EXPECT_EQ(sut.count, 23u);
  EXPECT_EQ(sut.startTime, 10 * kSecond);
  EXPECT_EQ(sut.endTime, 21 * kSecond);
  EXPECT_EQ(sut.fileBytes, std::filesystem::file_size(path));
  ASSERT_EQ(sut.topics.size(), 3u);
  EXPECT_EQ(sut.topics[0].topic.name, "/range");
  EXPECT_DOUBLE_EQ(sut.topics[0].rate, 5.0);
  EXPECT_EQ(sut.topics[0].longestGap, kSecond / 5);
  EXPECT_EQ(sut.topics[0].bytes, 10 * toCdr(sensor_msgs::Range()).size());
  EXPECT_EQ(sut.topics[1].count, 0u);
  EXPECT_EQ(sut.topics[2].longestGap, 8 * kSecond);
}

std::string refusalOf(const std::string& path) {
  try {
    BagReader sut(path);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "opened";
}

TEST_F(BagReaderTest, aFileThatIsNoRecordingIsRefused) {
  const auto expectRefusal = [](const std::string& path, const std::string& text) {
    EXPECT_EQ(refusalOf(path), path + ": " + text);
  };
  expectRefusal(folder / "none.mcap", "No such file or directory");
  expectRefusal(folder.string(), "a metadata.yaml expected, there is none");
  const std::string noMagic =
      "byte 0: a recording (.mcap, .db3 or a rosbag2 folder) expected, other bytes given";
  expectRefusal(folder.write("empty.mcap", ""), noMagic);
  expectRefusal(folder.write("text.mcap", "{\"sensor\": 1}\n"), noMagic);
  expectRefusal(folder.write("whole.mcap.zstd", "\x28\xb5\x2f\xfd rest"),
                "a recording expected, a zstd-compressed file given; decompress it first");
  expectRefusal(folder.write("other.db3", std::string("SQLite format 3\0", 16)),
                "a recording of rosbag2 expected: file is not a database");
  folder.write("metadata.yaml",
               "rosbag2_bagfile_information:\n  relative_file_paths: [../a.mcap]\n");
  expectRefusal(folder.string(), "a file a.mcap expected, there is none");
  folder.write("metadata.yaml", "rosbag2_bagfile_information:\n  relative_file_paths: {{\n");
  EXPECT_THAT(refusalOf(folder.string()), HasSubstr("yaml-cpp: error at line"));
  folder.write("a.mcap", "");
  folder.write("metadata.yaml",
               "rosbag2_bagfile_information:\n  relative_file_paths: [a.mcap, x/a.mcap]\n");
  expectRefusal(folder.string(), "metadata.yaml: each file once expected, a.mcap is there again");
  make();
  EXPECT_THROW(recoverBag(path, path), std::invalid_argument);
}

}  // namespace
}  // namespace QV::ros2
