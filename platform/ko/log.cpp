#include "platform/ko/log.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
#include <shared_mutex>
#include <vector>

#include <boost/make_shared.hpp>

#include "platform/ko/internal/log_console.h"

namespace ko::log {

struct SinkEntry {
  Level level;
  Sink sink;
  std::mutex mutex;
  bool active = true;
};

namespace {

using Sinks = std::vector<boost::shared_ptr<SinkEntry>>;

struct State {
  std::shared_mutex mutex;
  Level consoleLevel = Level::warning;
  std::map<std::string, Level, std::less<>> categoryLevels;
  Sinks sinks;
  // The most that anybody wants: lines above it cost one load.
  std::atomic<Level> mostWanted{Level::warning};

  void updateMostWanted() {
    Level most = consoleLevel;
    for (const auto& entry : sinks) most = std::max(most, entry->level);
    for (const auto& [category, level] : categoryLevels) most = std::max(most, level);
    mostWanted = most;
  }
};

// Never destroyed: threads may still log while the process ends.
State& state() {
  static State* instance = new State;
  return *instance;
}

// The two limits that hold for a category: standard error's and that of the sinks.
struct Limits {
  Level console;
  Level sinks;
};

Limits limitsOf(const State& state, std::string_view category) {
  const auto found = state.categoryLevels.find(category);
  if (found == state.categoryLevels.end()) return {state.consoleLevel, Level::verbose};
  return {found->second, found->second};
}

bool anySinkWants(const Sinks& sinks, Level level) {
  return std::any_of(sinks.begin(), sinks.end(),
                     [level](const auto& entry) { return level <= entry->level; });
}

thread_local bool delivering = false;

struct DeliveringScope {
  DeliveringScope() { delivering = true; }
  ~DeliveringScope() { delivering = false; }
};

// A line is often written by a destructor: no exception may leave a sink.
void callSink(const SinkEntry& entry, const Record& record) noexcept {
  try {
    entry.sink(record);
  } catch (const std::exception& failure) {
    detail::writeToConsole(Level::error, std::string("ko.log: a sink failed: ") + failure.what());
  } catch (...) {
    detail::writeToConsole(Level::error, "ko.log: a sink failed");
  }
}

void deliver(const Sinks& sinks, const Record& record) {
  if (delivering) return;
  DeliveringScope scope;
  for (const auto& entry : sinks) {
    if (record.level > entry->level) continue;
    std::lock_guard<std::mutex> lock(entry->mutex);
    if (entry->active) callSink(*entry, record);
  }
}

}  // namespace

void setLevel(Level level) {
  std::unique_lock lock(state().mutex);
  state().consoleLevel = level;
  state().updateMostWanted();
}

void setLevel(const std::string& category, Level level) {
  std::unique_lock lock(state().mutex);
  state().categoryLevels[category] = level;
  state().updateMostWanted();
}

void resetLevel(const std::string& category) {
  std::unique_lock lock(state().mutex);
  state().categoryLevels.erase(category);
  state().updateMostWanted();
}

bool isEnabled(Level level, std::string_view category) {
  if (level == Level::silent || level > state().mostWanted.load(std::memory_order_relaxed)) {
    return false;
  }
  std::shared_lock lock(state().mutex);
  const Limits limits = limitsOf(state(), category);
  return level <= limits.console || (level <= limits.sinks && anySinkWants(state().sinks, level));
}

void write(Level level, std::string_view category, std::string_view method, std::string message) {
  Record record{level, std::string(category), std::string(method), std::move(message),
                Clock::now()};
  Limits limits{};
  Sinks sinks;
  {
    std::shared_lock lock(state().mutex);
    limits = limitsOf(state(), category);
    if (level <= limits.sinks) sinks = state().sinks;
  }
  if (level <= limits.console) {
    detail::writeToConsole(
        level, record.category + "." + record.method + ": " + onOneLine(record.message));
  }
  deliver(sinks, record);
}

ScopedSink::ScopedSink(Level level, Sink sink) : entry(boost::make_shared<SinkEntry>()) {
  entry->level = level;
  entry->sink = std::move(sink);
  std::unique_lock lock(state().mutex);
  state().sinks.push_back(entry);
  state().updateMostWanted();
}

ScopedSink::~ScopedSink() {
  {
    std::unique_lock lock(state().mutex);
    std::erase(state().sinks, entry);
    state().updateMostWanted();
  }
  std::lock_guard<std::mutex> lock(entry->mutex);
  entry->active = false;
}

}  // namespace ko::log
