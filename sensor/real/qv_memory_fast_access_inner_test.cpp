#include <string>
#include <vector>

#include "platform/middleware/contracts/memory_contract.h"
#include "platform/middleware/qv_error.h"
#include "sensor/real/qv_memory_fast_access.h"

namespace QV {

bool QVMemoryFastAccess::InnerTest(boost::shared_ptr<QVBroker> broker) {
  if (!broker) throw QVError("QVMemoryFastAccess", "InnerTest:", "pBroker was NULL");
  boost::shared_ptr<QVMemoryProxy> memory;
  try {
    memory = broker->getSpecialisedProxy<QVMemoryProxy>(MemoryContract::kModule);
  } catch (const std::exception& error) {
    throw QVError("QVMemoryFastAccess", "InnerTest",
                  std::string("When creating memory proxy: ") + error.what());
  }
  const std::vector<std::string> keys{"QVMemoryFastAccess/Test/0", "QVMemoryFastAccess/Test/1",
                                      "QVMemoryFastAccess/Test/2"};
  const std::vector<float> inserted{1.5f, -2.25f, 1024.0f};
  for (std::size_t i = 0; i < keys.size(); ++i) memory->insertData(keys[i], inserted[i]);
  QVMemoryFastAccess access;
  access.ConnectToVariables(broker, keys, false);
  std::vector<float> fast;
  access.GetValues(fast);
  std::vector<float> slow;
  slow.reserve(keys.size());
  for (const std::string& key : keys) slow.push_back(memory->getData(key).toFloat());
  return fast == inserted && slow == inserted;
}

}  // namespace QV
