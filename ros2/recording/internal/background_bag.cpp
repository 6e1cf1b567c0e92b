#include "ros2/recording/internal/background_bag.h"

#include <utility>

namespace QV::ros2 {
namespace {

constexpr std::size_t kLarge = std::size_t{128} << 10;
constexpr std::size_t kMostBatches = 8;
constexpr std::size_t kMostBytes = std::size_t{4} << 20;

}  // namespace

BackgroundBag::BackgroundBag(const std::string& path, const BagOptions& options)
    : chunkTime(options.chunkTime), writer(path, options), thread([this] { xRun(); }) {}

BackgroundBag::~BackgroundBag() {
  xHandOver();
  {
    const std::lock_guard lock(mutex);
    isEnding = true;
  }
  changed.notify_all();
  thread.join();
}

std::uint16_t BackgroundBag::addTopic(const SessionTopic& topic) {
  xDo([added = makeBagTopic(topic.name, *topic.type, topic.qos)](BagWriter& bag) {
    bag.addTopic(added);
  });
  return topicCount++;
}

void BackgroundBag::addMetadata(const std::string& name,
                                const std::map<std::string, std::string>& values) {
  xDo([name, values](BagWriter& bag) { bag.addMetadata(name, values); });
}

void BackgroundBag::addAttachment(const BagAttachment& attachment) {
  xDo([attachment](BagWriter& bag) { bag.addAttachment(attachment); });
}

void BackgroundBag::xWrite(std::uint16_t topic, std::uint64_t time, const MessageType& type,
                           const void* message) {
  type.encode(message, cdr);
  xTake(topic, time);
}

void BackgroundBag::xTake(std::uint16_t topic, std::uint64_t time) {
  if (cdr.size() >= kLarge) {
    if (!filling.entries.empty()) xHandOver();
    filling.bytes.swap(cdr);
  } else {
    filling.bytes.insert(filling.bytes.end(), cdr.begin(), cdr.end());
  }
  filling.entries.push_back({topic, time, filling.bytes.size()});
  // Data waits at most one chunk time, because unwritten data is lost at a kill.
  const bool isOld = time >= filling.entries.front().time + chunkTime;
  if (filling.bytes.size() < kLarge && !isOld) return;
  xHandOver();
  xThrowIfFailed();
}

void BackgroundBag::close() {
  xDo([](BagWriter& bag) { bag.close(); });
  std::unique_lock lock(mutex);
  changed.wait(lock, [this] { return underWay == 0; });
  lock.unlock();
  xThrowIfFailed();
}

void BackgroundBag::xDo(std::function<void(BagWriter&)> call) {
  filling.other = std::move(call);
  xHandOver();
  xThrowIfFailed();
}

void BackgroundBag::xHandOver() {
  std::unique_lock lock(mutex);
  // A message that is larger waits alone.
  changed.wait(lock, [this] {
    return underWay == 0 ||
           (underWay < kMostBatches && bytesUnderWay + filling.bytes.size() <= kMostBytes);
  });
  bytesUnderWay += filling.bytes.size();
  waiting.push_back(std::move(filling));
  ++underWay;
  filling = {};
  if (!spare.empty()) {
    filling = std::move(spare.back());
    spare.pop_back();
  }
  lock.unlock();
  changed.notify_all();
}

void BackgroundBag::xThrowIfFailed() {
  const std::lock_guard lock(mutex);
  if (failure) std::rethrow_exception(std::exchange(failure, nullptr));
}

void BackgroundBag::xRun() {
  std::unique_lock lock(mutex);
  while (true) {
    changed.wait(lock, [this] { return isEnding || !waiting.empty(); });
    if (waiting.empty()) return;
    std::vector<Batch> taken = std::exchange(waiting, {});
    lock.unlock();
    for (const Batch& batch : taken) xPack(batch);
    lock.lock();
    underWay -= taken.size();
    for (Batch& batch : taken) {
      bytesUnderWay -= batch.bytes.size();
      batch.bytes.clear();
      batch.entries.clear();
      batch.other = nullptr;
      if (spare.size() < kMostBatches) spare.push_back(std::move(batch));
    }
    changed.notify_all();
  }
}

void BackgroundBag::xPack(const Batch& batch) {
  if (hasFailed) return;
  try {
    std::size_t begin = 0;
    for (const Entry& entry : batch.entries) {
      writer.write(entry.topic, entry.time, entry.time,
                   BytesView(batch.bytes).subspan(begin, entry.end - begin));
      begin = entry.end;
    }
    if (batch.other) batch.other(writer);
  } catch (...) {
    const std::lock_guard lock(mutex);
    hasFailed = true;
    failure = std::current_exception();
  }
}

}  // namespace QV::ros2
