#include "ros2/graph/internal/arrival.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <set>
#include <stop_token>
#include <utility>

namespace QV::ros2 {
namespace {

using namespace std::chrono_literals;
using MachineClock = std::chrono::steady_clock;

/** Participants that are on this machine answer a newcomer sooner. */
constexpr auto kLongestWait = 40ms;
/** The others of them answer about as soon as the first one. */
constexpr auto kWaitForMore = 15ms;
constexpr auto kGlance = 2ms;
/** An offer that was dropped comes again after a second. */
constexpr auto kQuiet = 3s;
constexpr auto kWatch = 100ms;

dds_entity_t makeParticipant(dds_entity_t domain) {
  dds_domainid_t id = 0;
  dds_get_domainid(domain, &id);
  dds_qos_t* const qos = dds_create_qos();
  const std::string enclave = "enclave=/;";
  dds_qset_userdata(qos, enclave.data(), enclave.size());
  const auto result = dds_create_participant(id, qos, nullptr);
  dds_delete_qos(qos);
  return checked(result, "the graph can't be joined");
}

/** Returns all participants that one knows, itself among them. */
std::set<dds_instance_handle_t> findKnown(dds_entity_t participant) {
  const Entity reader(
      dds_create_reader(participant, DDS_BUILTIN_TOPIC_DCPSPARTICIPANT, nullptr, nullptr));
  std::set<dds_instance_handle_t> known;
  void* sample = nullptr;
  dds_sample_info_t info;
  while (dds_take(reader.get(), &sample, &info, 1, 1) > 0) {
    if (info.instance_state == DDS_IST_ALIVE) known.insert(info.instance_handle);
    dds_return_loan(reader.get(), &sample, 1);
  }
  return known;
}

bool awaitOthers(dds_entity_t participant) {
  for (auto waited = 0ms; waited < kLongestWait; waited += kGlance) {
    if (findKnown(participant).size() > 1) {
      std::this_thread::sleep_for(kWaitForMore);
      return true;
    }
    std::this_thread::sleep_for(kGlance);
  }
  return false;
}

/** True if the engine visits `a` before `b`: it compares the numbers that their ids consist of, as
 * they stand in memory. */
bool isFirst(const Entity& a, const Entity& b) {
  const auto keyOf = [](const Entity& entity) {
    Guid guid = guidOf(entity.get());
    for (auto word = guid.begin(); word != guid.end(); word += 4) std::reverse(word, word + 4);
    return guid;
  };
  return keyOf(a) < keyOf(b);
}

/** Leaves when nobody has come for a while. */
void leaveInQuiet(const std::stop_token& stop, Entity second) {
  std::mutex mutex;
  std::condition_variable_any never;
  std::set<dds_instance_handle_t> known;
  auto changed = MachineClock::now();
  while (!stop.stop_requested() && MachineClock::now() - changed < kQuiet) {
    auto now = findKnown(second.get());
    if (now != known) changed = MachineClock::now();
    known = std::move(now);
    std::unique_lock lock(mutex);
    never.wait_for(lock, stop, kWatch, [] { return false; });
  }
}

}  // namespace

Arrival::Arrival(dds_entity_t domain, bool expectsOthers) : participant(makeParticipant(domain)) {
  if (!expectsOthers || !awaitOthers(participant.get())) return;
  // It shares the ports of the first, so it takes no room of the machine's.
  Entity second(makeParticipant(domain));
  // Of two, the engine takes from a newcomer's offer what the first one misses: that one stays.
  if (isFirst(second, participant)) std::swap(second, participant);
  leaving = std::jthread([second = std::move(second)](const std::stop_token& stop) mutable {
    leaveInQuiet(stop, std::move(second));
  });
}

}  // namespace QV::ros2
