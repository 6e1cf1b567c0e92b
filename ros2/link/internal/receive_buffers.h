#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/api.h"

namespace QV::ros2 {

/**
 * Returns what to do if images of `topics` topics, `bytes` each, overrun the receive buffers of
 * this machine when they come at once; std::nullopt if they don't. `limit` is net.core.rmem_max,
 * bytes.
 */
QV_API std::optional<std::string> adviseOnBuffers(std::size_t topics, std::size_t bytes,
                                                  std::uint64_t limit);

/** Counts a topic with images of this program while it lives. Thread-safe. */
class ImageTopic {
 public:
  ImageTopic();
  ~ImageTopic();
  ImageTopic(const ImageTopic&) = delete;
  ImageTopic& operator=(const ImageTopic&) = delete;

  /** Notes that a message goes to a reader. Logs that advice, once in a program. */
  static void note(std::size_t bytes);
};

}  // namespace QV::ros2
