#include "apps/output/health_text.h"

#include "platform/ko/log.h"
#include "session/internal/number_text.h"

namespace QV::app {

std::string healthText(const sensor::SensorHealth& health, ko::Clock::time_point now) {
  std::string text = ko::log::onOneLine(health.reason);
  if (!isFault(health.state)) return text;
  const boost::chrono::duration<double> lasted = now - health.since;
  text += " (for " + session::fixed(lasted.count(), 1) + " s";
  if (health.times > 1) text += ", " + std::to_string(health.times) + " times so far";
  return text + ")";
}

}  // namespace QV::app
