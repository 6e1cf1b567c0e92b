#pragma once

#include <memory>
#include <utility>

#include "python/bindings/outlets.h"
#include "python/bindings/session_handle.h"
#include "python/bindings/snapshots.h"

namespace QV::python {

/** An outlet of C++'s that has to go before its session does: it takes nothing from then on. */
template <typename T>
class GuestOutlet : public outlets::Outlet {
 public:
  /** `make` makes it of the session, on the thread that opened that. */
  template <typename Make>
  GuestOutlet(std::shared_ptr<SessionHandle> host, Make make) : host(std::move(host)) {
    auto made = this->host->use(make);
    guest = made;
    std::function<void()> before;
    if constexpr (requires { made->obey(); }) {
      before = [weak = guest] {
        if (const auto living = weak.lock()) living->obey();
      };
    }
    this->host->add(std::move(made), std::move(before));
  }

  session::Demand getDemand() const override {
    const auto living = guest.lock();
    return living ? living->getDemand() : session::Demand();
  }
  bool isWatched() const override {
    const auto living = guest.lock();
    return living && living->isWatched();
  }
  void show(const session::Snapshot& snapshot) override {
    if (const auto living = guest.lock()) living->show(snapshot);
  }
  void finish() override {
    if (const auto living = guest.lock()) living->finish();
  }

  /** Calls it on the session's thread, once at a time; RuntimeError once that has ended. */
  template <typename Call>
  auto use(Call call) {
    return host->use([&](session::Session&) { return call(*guest.lock()); });
  }

 private:
  const std::shared_ptr<SessionHandle> host;
  std::weak_ptr<T> guest;
};

/** Binds what Python calls of one by itself: a session's thread alone may. */
template <typename Class>
void bindGuest(Class& type) {
  using Guest = typename Class::type;
  type.def(
          "show",
          [](Guest& self, const SnapshotView& view) {
            self.use([&](auto& guest) { writing([&] { guest.show(*view.snapshot); }); });
          },
          "snapshot"_a,
          "show(snapshot: Snapshot) -> None\n\nShows the next snapshot, on the session's thread.")
      .def(
          "finish",
          [](Guest& self) { self.use([](auto& guest) { writing([&] { guest.finish(); }); }); },
          "finish() -> None\n\nEnds the outlet; no snapshot may follow.")
      .def_property_readonly(
          "demand",
          [](Guest& self) { return self.use([](auto& guest) { return guest.getDemand(); }); },
          "dict[str, set[str]]: The sensors that it wants, by subscriber, for Session.set_demand.");
}

}  // namespace QV::python
