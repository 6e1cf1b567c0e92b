#include "sensor/real/qv_memory_fast_access.h"

#include <algorithm>
#include <atomic>
#include <memory>

#include "platform/middleware/contracts/memory_contract.h"
#include "platform/middleware/qv_broker_manager.h"
#include "platform/middleware/qv_error.h"

namespace QV {
namespace {

const char kModule[] = "QVMemoryFastAccess";

boost::shared_ptr<QVBroker> anyBroker() {
  return QVBrokerManager::getInstance()->getRandomBroker();
}

boost::shared_ptr<QVMemoryProxy> memoryOf(const boost::shared_ptr<QVBroker>& broker,
                                          const char* method) {
  if (!broker) throw QVError(kModule, method, "no broker given");
  return broker->getSpecialisedProxy<QVMemoryProxy>(MemoryContract::kModule);
}

template <typename T>
T load(T* pointer) {
  return std::atomic_ref<T>(*pointer).load(std::memory_order_relaxed);
}

template <typename T>
void read(const std::vector<T*>& pointers, std::vector<T>& out) {
  const std::size_t count = pointers.size();
  out.resize(count);
  T* const* from = pointers.data();
  T* to = out.data();
  // Four loads make two stores, which compilers do not find across atomics.
  std::size_t i = 0;
  for (; i + 4 <= count; i += 4) {
    const T values[] = {load(from[i]), load(from[i + 1]), load(from[i + 2]), load(from[i + 3])};
    std::copy_n(values, 4, to + i);
  }
  for (; i < count; ++i) to[i] = load(from[i]);
}

template <typename T>
void write(const std::vector<T*>& pointers, const std::vector<T>& in) {
  const std::size_t count = std::min(pointers.size(), in.size());
  for (std::size_t i = 0; i < count; ++i) {
    std::atomic_ref<T>(*pointers[i]).store(in[i], std::memory_order_relaxed);
  }
}

bool isValid(const QVMemoryProxy& memory, const std::string& key) {
  try {
    return memory.getData(key).isValid();
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace

QVMemoryFastAccess::QVMemoryFastAccess() = default;

QVMemoryFastAccess::~QVMemoryFastAccess() = default;

void QVMemoryFastAccess::ConnectToVariables(boost::shared_ptr<QVBroker> broker,
                                            const std::vector<std::string>& keys, bool safe) {
  if (stopped) return;
  if (!memoryProxy && broker) memoryProxy = broker->getProxy(MemoryContract::kModule, 0);
  floatPointers.clear();
  floatPointers.reserve(keys.size());
  for (const std::string& key : keys) {
    const auto memory = memoryOf(broker, "ConnectToVariables");
    floatPointers.push_back(safe ? getSafeDataPtr<float>(memory, key, 0.0f)
                                 : static_cast<float*>(memory->getDataPtr(key)));
  }
}

void QVMemoryFastAccess::ConnectToIntVariables(boost::shared_ptr<QVBroker> broker,
                                               const std::vector<std::string>& keys) {
  if (stopped) return;
  // The int list asks any broker, not the given one, as callers expect.
  if (!memoryProxy && broker) memoryProxy = anyBroker()->getProxy(MemoryContract::kModule, 0);
  intPointers.clear();
  intPointers.reserve(keys.size());
  for (const std::string& key : keys) {
    const auto memory = memoryOf(broker, "ConnectToIntVariables");
    intPointers.push_back(getSafeDataPtr<int>(memory, key, 0));
  }
}

void QVMemoryFastAccess::GetValues(std::vector<float>& out) const {
  read(floatPointers, out);
}

void QVMemoryFastAccess::GetValues(std::vector<int>& out) const {
  read(intPointers, out);
}

void QVMemoryFastAccess::SetValues(const std::vector<float>& in) {
  write(floatPointers, in);
}

void QVMemoryFastAccess::SetValues(const std::vector<int>& in) {
  write(intPointers, in);
}

void QVMemoryFastAccess::StopAllAccess() {
  stopped = true;
}

void QVMemoryFastAccess::insertBuffer(const std::string& key, const QVValue& value) {
  memoryOf(anyBroker(), "insertBuffer")->insertData(key, value);
}

void* QVMemoryFastAccess::getDataPtr(boost::shared_ptr<QVBroker> broker, const std::string& key,
                                     bool) {
  if (!broker) broker = anyBroker();
  return memoryOf(broker, "getDataPtr")->getDataPtr(key);
}

QVValue* QVMemoryFastAccess::getBuffer(const std::string& key) {
  auto result = std::make_unique<QVValue>();
  *result = memoryOf(anyBroker(), "getBuffer")->getData(key);
  return result.release();
}

template <typename T>
T* QVMemoryFastAccess::getSafeDataPtr(boost::shared_ptr<QVMemoryProxy> memory,
                                      const std::string& key, T defaultValue) {
  if (!memory) throw QVError(kModule, "getSafeDataPtr", "no memory proxy given");
  if (!isValid(*memory, key)) memory->insertData(key, defaultValue);
  return static_cast<T*>(memory->getDataPtr(key));
}

template QV_API float* QVMemoryFastAccess::getSafeDataPtr<float>(boost::shared_ptr<QVMemoryProxy>,
                                                                 const std::string&, float);
template QV_API int* QVMemoryFastAccess::getSafeDataPtr<int>(boost::shared_ptr<QVMemoryProxy>,
                                                             const std::string&, int);

}  // namespace QV
