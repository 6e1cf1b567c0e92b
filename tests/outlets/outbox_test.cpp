#include "outlets/web/internal/outbox.h"

#include <vector>

#include "tests/support/vocabulary.h"

namespace QV::outlets {
namespace {

WebMessage message(const std::string& text, Delivery delivery, const std::string& slot = {}) {
  return {std::make_shared<const std::string>(text), false, delivery, slot};
}

std::vector<std::string> takeAll(Outbox& outbox) {
  std::vector<std::string> texts;
  while (const auto next = outbox.take()) texts.push_back(*next->payload);
  return texts;
}

TEST(Outbox, sendsControlFirstAndOnlyTheLatestMessageOfASlot) {
  Outbox sut;
  sut.add(message("old", Delivery::latest, "state"));
  sut.add(message("picture", Delivery::latest, "depth"));
  sut.add(message("line", Delivery::recent));
  sut.add(message("new", Delivery::latest, "state"));
  sut.add(message("hello", Delivery::control));
  EXPECT_THAT(takeAll(sut), ElementsAre("hello", "line", "picture", "new"));
}

TEST(Outbox, aBusySlotDoesNotStarveTheOthers) {
  Outbox sut;
  sut.add(message("b", Delivery::latest, "b"));
  std::vector<std::string> taken;
  for (int i = 0; i < 2; ++i) {
    sut.add(message("a", Delivery::latest, "a"));
    sut.add(message("line", Delivery::recent));
    taken.push_back(*sut.take()->payload);
    taken.push_back(*sut.take()->payload);
  }
  EXPECT_THAT(taken, ElementsAre("line", "a", "line", "b"));
}

TEST(Outbox, theQueueOfAClientThatNeverReadsIsBounded) {
  Outbox sut;
  for (int i = 0; i < 1000; ++i) {
    EXPECT_TRUE(sut.add(message(std::to_string(i), Delivery::recent)));
  }
  EXPECT_EQ(*sut.take()->payload, "936");
  EXPECT_THAT(takeAll(sut), SizeIs(Outbox::kMostRecent - 1));
  for (std::size_t i = 0; i < Outbox::kMostControl; ++i) {
    EXPECT_TRUE(sut.add(message("x", Delivery::control)));
  }
  EXPECT_FALSE(sut.add(message("x", Delivery::control)));
}

}  // namespace
}  // namespace QV::outlets
