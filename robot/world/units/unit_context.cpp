#include "robot/world/units/unit_context.h"

#include "platform/middleware/qv_error.h"

namespace QV::robot {

void UnitContext::withdraw(const std::string& key) const {
  try {
    memory->insertData(key, QVValue());
  } catch (const QVError&) {
    // The address that was given out must stay a number's.
  }
}

}  // namespace QV::robot
