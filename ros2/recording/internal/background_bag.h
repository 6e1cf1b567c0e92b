#pragma once

#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "ros2/bag/bag_writer.h"
#include "ros2/recording/internal/message_sink.h"

namespace QV::ros2 {

/**
 * A BagWriter that packs and writes on a thread of its own, in the order of the calls, so that the
 * same calls give the same bytes. A caller that is too far ahead waits. An exception of the writer
 * comes out of a later call, once; then nothing more is written. Use it on one thread at a time.
 * Not copyable.
 */
class BackgroundBag : public MessageSink {
 public:
  /** Opens the file as BagWriter does. */
  explicit BackgroundBag(const std::string& path, const BagOptions& options = {});
  ~BackgroundBag() override;

  std::uint16_t addTopic(const SessionTopic& topic) override;
  void addMetadata(const std::string& name, const std::map<std::string, std::string>& values);
  void addAttachment(const BagAttachment& attachment);

  /** Waits until all is in the file, which is whole then and takes no more. */
  void close();

 private:
  struct Entry {
    std::uint16_t topic = 0;
    std::uint64_t time = 0;
    std::size_t end = 0;
  };
  /** Messages one behind the other, or something else to do. */
  struct Batch {
    Bytes bytes;
    std::vector<Entry> entries;
    std::function<void(BagWriter&)> other;
  };

  void xWrite(std::uint16_t topic, std::uint64_t time, const MessageType& type,
              const void* message) override;
  /** Takes an encoded message; a large one becomes a batch of its own, without another copy. */
  void xTake(std::uint16_t topic, std::uint64_t time);
  void xDo(std::function<void(BagWriter&)> call);
  void xHandOver();
  void xThrowIfFailed();
  void xRun();
  void xPack(const Batch& batch);

  const std::uint64_t chunkTime;
  BagWriter writer;
  std::uint16_t topicCount = 0;
  Bytes cdr;
  Batch filling;

  std::mutex mutex;
  std::condition_variable changed;
  std::vector<Batch> waiting;
  std::vector<Batch> spare;
  std::size_t underWay = 0;
  std::size_t bytesUnderWay = 0;
  std::exception_ptr failure;
  bool hasFailed = false;
  bool isEnding = false;
  std::thread thread;
};

}  // namespace QV::ros2
