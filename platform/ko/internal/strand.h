#pragma once

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

#include "platform/api.h"

namespace ko {

/**
 * Makes calls on the event loop's threads one after the other, in the order of their posting. Safe
 * from any thread, its own calls included. What a call throws is logged at error level, category
 * "ko.Strand", and the next one follows.
 */
class QV_API Strand {
 public:
  Strand();
  /** Stops. */
  ~Strand();
  Strand(const Strand&) = delete;
  Strand& operator=(const Strand&) = delete;

  /** An empty call throws std::invalid_argument; after `stop` a call is dropped. */
  void post(boost::function<void()> call);

  /**
   * Drops what has not started and waits for the running call, unless it is called from that one.
   * No call runs afterwards.
   */
  void stop();

  class State;

 private:
  boost::shared_ptr<State> state;
};

}  // namespace ko
