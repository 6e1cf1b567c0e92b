#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "platform/api.h"

namespace QV::ros2 {

/**
 * Counts topics with images, and logs, once, if those of one moment overrun the receive buffers of
 * this machine. Thread-safe.
 */
class QV_API ImageTopics {
 public:
  /** `limit` is net.core.rmem_max, bytes. */
  explicit ImageTopics(std::uint64_t limit) : limit(limit) {}
  /** Returns those of this program. */
  static ImageTopics& ofProgram();

  void add() { ++count; }
  void remove() { --count; }
  /** Notes that a message of one of them goes to a reader. */
  void note(std::size_t bytes);

 private:
  const std::uint64_t limit;
  std::atomic<std::size_t> count{0};
  std::atomic<std::size_t> judgedCount{0};
  std::atomic<bool> isSaid{false};
};

/** Counts as a topic with images while it lives. */
class ImageTopic {
 public:
  /** `all` must outlive it. */
  explicit ImageTopic(ImageTopics& all = ImageTopics::ofProgram()) : all(all) { all.add(); }
  ~ImageTopic() { all.remove(); }
  ImageTopic(const ImageTopic&) = delete;
  ImageTopic& operator=(const ImageTopic&) = delete;

  void note(std::size_t bytes) const { all.note(bytes); }

 private:
  ImageTopics& all;
};

}  // namespace QV::ros2
