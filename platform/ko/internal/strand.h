#pragma once

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

#include "platform/api.h"

namespace ko {

/**
 * Runs calls on the event loop's threads, one after the other, in the order of posting.
 * Thread-safe, also from its calls. An exception is logged as an error of "ko.Strand", and the next
 * call follows.
 */
class QV_API Strand {
 public:
  Strand();
  /** Stops the strand. */
  ~Strand();
  Strand(const Strand&) = delete;
  Strand& operator=(const Strand&) = delete;

  /** Throws std::invalid_argument for an empty call. After `stop` a call is dropped. */
  void post(boost::function<void()> call);

  /**
   * Drops the calls that have not started and waits for the running one, unless called from it. No
   * call runs afterwards.
   */
  void stop();

  class State;

 private:
  boost::shared_ptr<State> state;
};

}  // namespace ko
