#include "platform/ko/internal/crew.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <pthread.h>
#include <system_error>
#include <thread>

namespace ko::detail {
namespace {

const int most = std::max(static_cast<int>(std::thread::hardware_concurrency()) - 1, 1);

/** A share of work that a caller offers, for as long as he works on it himself. */
struct Offer {
  const std::function<void()>& work;
  int wanted;
  std::atomic<int> helping{0};
  Offer* next = nullptr;
};

class Crew {
 public:
  void share(const std::function<void()>& work, int helpers) {
    Offer offer{work, helpers};
    xMake(offer);
    // The wait also happens if the work throws, because helpers hold the offer.
    const std::unique_ptr<Offer, std::function<void(Offer*)>> awaited(
        &offer, [this](Offer* made) { xAwait(*made); });
    work();
  }

 private:
  void xMake(Offer& offer) {
    const int count = std::min(offer.wanted, most);
    {
      const std::lock_guard lock(mutex);
      offer.next = offers;
      offers = &offer;
      while (size < count && xStart()) ++size;
    }
    for (int i = 0; i < count; ++i) offered.notify_one();
  }

  /** A thread that lives as long as the process; false if the machine has none left. */
  bool xStart() try {
    std::thread([this] { xHelp(); }).detach();
    return true;
  } catch (const std::system_error&) {
    return false;
  }

  [[noreturn]] void xHelp() {
    std::unique_lock lock(mutex);
    for (;;) {
      offered.wait(lock, [&] { return offers != nullptr; });
      Offer& offer = *offers;
      if (--offer.wanted == 0) offers = offer.next;
      ++offer.helping;
      lock.unlock();
      offer.work();
      lock.lock();
      // The last touch: the caller may go with its offer.
      if (--offer.helping == 0) finished.notify_all();
    }
  }

  void xAwait(Offer& offer) {
    // Helpers are about to finish: to sleep and be woken takes longer, most of the time.
    constexpr int kLooks = 100;
    xWithdraw(offer);
    for (int i = 0; i < kLooks && offer.helping > 0; ++i) std::this_thread::yield();
    if (offer.helping == 0) return;
    std::unique_lock lock(mutex);
    finished.wait(lock, [&] { return offer.helping == 0; });
  }

  /** Nobody begins it any more. */
  void xWithdraw(const Offer& offer) {
    const std::lock_guard lock(mutex);
    for (Offer** at = &offers; *at != nullptr; at = &(*at)->next) {
      if (*at != &offer) continue;
      *at = offer.next;
      return;
    }
  }

  std::mutex mutex;
  std::condition_variable offered;
  std::condition_variable finished;
  Offer* offers = nullptr;
  int size = 0;
};

/** Never destroyed: its threads wait until the process ends. */
alignas(Crew) std::byte place[sizeof(Crew)];
Crew* crew = new (place) Crew();

// A child has none of its parent's threads, and may find the lock taken for good.
[[maybe_unused]] const int watchesForks =
    pthread_atfork(nullptr, nullptr, [] { crew = new (place) Crew(); });

}  // namespace

void shareWork(const std::function<void()>& work, int helpers) {
  if (helpers < 1) return work();
  crew->share(work, helpers);
}

}  // namespace ko::detail
