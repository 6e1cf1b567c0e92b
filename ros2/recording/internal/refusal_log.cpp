#include "ros2/recording/internal/refusal_log.h"

#include "platform/ko/log.h"

namespace QV::ros2 {
namespace {

constexpr int kSoundInARow = 10;

}  // namespace

void RefusalLog::refuse(const std::string& topic, const std::string& why) {
  if (refused.insert_or_assign(topic, kSoundInARow).second)
    ko::log::warning(category, "tell") << topic << ": refused: " << why;
}

void RefusalLog::accept(const std::string& topic) {
  const auto found = refused.find(topic);
  if (found == refused.end() || --found->second > 0) return;
  refused.erase(found);
  ko::log::info(category, "tell") << topic << ": its messages are valid again";
}

}  // namespace QV::ros2
