#include <memory>
#include <sqlite3.h>
#include <stdexcept>

#include "ros2/bag/internal/bag_file.h"
#include "ros2/bag/internal/damage_log.h"

namespace QV::ros2 {
namespace {

/** The most bytes of one message. */
constexpr int kMostBytes = 512 << 20;
/** Of what all topics say of themselves. */
constexpr int kMostTexts = 64 << 20;

using Database = std::unique_ptr<sqlite3, int (*)(sqlite3*)>;
using Statement = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)>;

Database openDatabase(const std::string& path) {
  sqlite3* opened = nullptr;
  const int result = sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READONLY, nullptr);
  Database database(opened, sqlite3_close);
  if (result != SQLITE_OK) throw std::runtime_error(path + ": " + sqlite3_errstr(result));
  sqlite3_db_config(opened, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  sqlite3_db_config(opened, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
  sqlite3_db_config(opened, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  return database;
}

/** A rosbag2 recording in SQLite. */
class SqliteFile : public BagFile {
 public:
  explicit SqliteFile(const std::string& path)
      : path(path), damage(path), database(openDatabase(path)) {
    sqlite3_limit(database.get(), SQLITE_LIMIT_LENGTH, kMostTexts);
    xReadTopics();
    sqlite3_limit(database.get(), SQLITE_LIMIT_LENGTH, kMostBytes);
    seek(0);
  }

  std::vector<const BagTopic*> getTopics() const override {
    std::vector<const BagTopic*> result;
    result.reserve(topics.size());
    for (const auto& [id, topic] : topics) result.push_back(&topic);
    return result;
  }
  const std::vector<BagMetadata>& getMetadata() const override { return metadata; }
  const BagDamage& getDamage() const override { return damage.get(); }

  BagTimes getTimes() const override {
    const Statement row = xPrepare("SELECT MIN(timestamp), MAX(timestamp) FROM messages");
    if (sqlite3_step(row.get()) != SQLITE_ROW) return {};
    const auto column = [&](int i) {
      return static_cast<std::uint64_t>(sqlite3_column_int64(row.get(), i));
    };
    return {column(0), column(1)};
  }

  std::optional<std::uint64_t> getCount(const std::string& name) const override {
    const Statement row = xPrepare(
        "SELECT COUNT(*) FROM messages WHERE topic_id IN (SELECT id FROM topics WHERE name = ?)");
    sqlite3_bind_text(row.get(), 1, name.data(), static_cast<int>(name.size()), SQLITE_STATIC);
    if (sqlite3_step(row.get()) != SQLITE_ROW) return std::nullopt;
    return static_cast<std::uint64_t>(sqlite3_column_int64(row.get(), 0));
  }

  std::optional<BagMessage> next() override {
    while (!hasEnded) {
      // A statement that is done would begin again.
      hasEnded = xStep() != SQLITE_ROW;
      if (hasEnded) break;
      const auto topic = topics.find(sqlite3_column_int64(messages.get(), 0));
      if (topic != topics.end()) return xMessage(topic->second);
      damage.addMessages(static_cast<std::uint64_t>(sqlite3_column_int64(messages.get(), 3)), 1,
                         "its topic is not known");
    }
    return std::nullopt;
  }

  void seek(std::uint64_t logTime) override {
    hasEnded = false;
    messages = xPrepare(
        "SELECT topic_id, timestamp, data, id FROM messages WHERE timestamp >= ? "
        "ORDER BY timestamp, id");
    sqlite3_bind_int64(messages.get(), 1, static_cast<sqlite3_int64>(logTime));
  }

 private:
  Statement xPrepare(const char* text) const {
    sqlite3_stmt* prepared = nullptr;
    if (sqlite3_prepare_v2(database.get(), text, -1, &prepared, nullptr) != SQLITE_OK)
      throw std::runtime_error(
          path + ": a recording of rosbag2 expected: " + sqlite3_errmsg(database.get()));
    return {prepared, sqlite3_finalize};
  }

  void xReadTopics() {
    const Statement rows = xPrepare("SELECT * FROM topics");
    std::uint64_t left = kMostTexts;
    int result = SQLITE_OK;
    while ((result = sqlite3_step(rows.get())) == SQLITE_ROW) xAddTopic(rows.get(), left);
    if (result != SQLITE_DONE)
      throw std::runtime_error(path + ": its topics: " + sqlite3_errmsg(database.get()));
  }

  /** Takes what the topic says of itself from what is left. */
  void xAddTopic(sqlite3_stmt* row, std::uint64_t& left) {
    const auto column = [&](const std::string& name) -> std::string {
      for (int i = 0; i < sqlite3_column_count(row); ++i) {
        if (name != sqlite3_column_name(row, i)) continue;
        const auto* const text = sqlite3_column_blob(row, i);
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(row, i));
        const std::uint64_t needed = size + sizeof(BagTopic);
        if (needed > left)
          throw std::runtime_error(path + ": topics of up to " + std::to_string(kMostTexts) +
                                   " bytes expected, more given");
        left -= needed;
        return text == nullptr ? "" : std::string(static_cast<const char*>(text), size);
      }
      return "";
    };
    BagTopic topic{column("name"), column("type"), column("serialization_format"), "", "", {}};
    topic.metadata["offered_qos_profiles"] = column("offered_qos_profiles");
    topic.metadata["topic_type_hash"] = column("type_description_hash");
    if (const MessageType* const type = findMessageType(topic.type)) {
      topic.schemaEncoding = "ros2msg";
      topic.schema = type->getSchema();
    }
    topics[std::strtoll(column("id").c_str(), nullptr, 10)] = std::move(topic);
  }

  /** SQLITE_ROW, or anything else at the end. */
  int xStep() {
    const int result = sqlite3_step(messages.get());
    if (result != SQLITE_ROW && result != SQLITE_DONE)
      damage.add(0, std::string("the file ends early: ") + sqlite3_errmsg(database.get()));
    return result;
  }

  BagMessage xMessage(const BagTopic& topic) const {
    const auto time = static_cast<std::uint64_t>(sqlite3_column_int64(messages.get(), 1));
    const auto* const data =
        static_cast<const std::uint8_t*>(sqlite3_column_blob(messages.get(), 2));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(messages.get(), 2));
    return {&topic, time, time, {data, data == nullptr ? 0 : size}};
  }

  const std::string path;
  DamageLog damage;
  const Database database;
  std::map<std::int64_t, BagTopic> topics;
  Statement messages{nullptr, sqlite3_finalize};
  std::vector<BagMetadata> metadata;
  bool hasEnded = false;
};

}  // namespace

std::unique_ptr<BagFile> openSqlite(const std::string& path) {
  return std::make_unique<SqliteFile>(path);
}

}  // namespace QV::ros2
