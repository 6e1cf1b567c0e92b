#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>

#include "ros2/messages/message_type.h"

namespace QV::fuzz {

/** A message as a sound program sends it. */
struct Sound {
  const ros2::MessageType* type;
  ros2::Bytes cdr;
};

template <typename Message>
Sound sound(const Message& message) {
  return {&Message::getType(), ros2::toCdr(message)};
}

/** The messages of an input: with more of them, an input finds as much and takes longer. */
inline constexpr int kMostMessages = 4;

/** Returns a message, some of whose words, or whose end, `next` has changed. */
inline ros2::Bytes changed(ros2::Bytes cdr, const std::function<std::uint8_t()>& next) {
  constexpr std::size_t kHead = 4;
  constexpr std::size_t kWord = 4;
  for (std::size_t changes = next() % 4; changes > 0; --changes) {
    const std::size_t at = kHead + (next() * 256u + next()) % (cdr.size() - kHead);
    for (std::size_t i = at; i < std::min(at + kWord, cdr.size()); ++i) cdr[i] = next();
  }
  if (next() % 8 == 0) cdr.resize(cdr.size() - std::min<std::size_t>(next(), cdr.size()));
  return cdr;
}

}  // namespace QV::fuzz
