#pragma once

#include <memory>
#include <utility>

#include "python/bindings/session_handle.h"
#include "ros2/recording/session_replay.h"

namespace QV::python {

/** A recording that is played, which goes with its session. */
class ReplayHandle : public SessionHandle {
 public:
  explicit ReplayHandle(const std::shared_ptr<ros2::SessionReplay>& replay)
      : SessionHandle({replay, &replay->getSession()}, true), replay(replay) {}

  template <typename Call>
  auto useReplay(Call call) {
    return use([&](session::Session&) { return call(*replay.lock()); });
  }

 private:
  const std::weak_ptr<ros2::SessionReplay> replay;
};

}  // namespace QV::python
