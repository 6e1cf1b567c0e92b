/**
 * Any bytes as a message of any type: they are refused, or read into a message that is written and
 * read again as the same bytes.
 */
#include <stdexcept>

#include "fuzz/value_decoder.h"
#include "ros2/messages/internal/layout.h"

namespace QV::fuzz {
namespace {

using ros2::Bytes;
using ros2::BytesView;
using ros2::MessageType;

Bytes encode(const MessageType& type, const std::shared_ptr<void>& message) {
  Bytes cdr;
  type.encode(message.get(), cdr);
  return cdr;
}

void checkMessage(const MessageType& type, BytesView cdr) {
  const auto message = layoutOf(type).make();
  try {
    type.decode(cdr, message.get());
  } catch (const std::runtime_error& error) {
    return check(std::string(error.what()).starts_with(type.getName()), "an error without a name");
  }
  const Bytes once = encode(type, message);
  check(once.size() <= cdr.size() + 8 * cdr.size(), "more is written than was read");
  const auto again = layoutOf(type).make();
  type.decode(once, again.get());
  check(encode(type, again) == once, "written again it is another message");
}

}  // namespace
}  // namespace QV::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto& types = QV::ros2::getMessageTypes();
  if (size == 0) return 0;
  QV::fuzz::checkMessage(*types[data[0] % types.size()], {data + 1, size - 1});
  return 0;
}
