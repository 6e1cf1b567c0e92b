#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "platform/api.h"
#include "sensor/core/internal/planar_view.h"

namespace QV::sensor {

/**
 * The pairs of sensors that contradict each other where they look at the same place, and for how
 * long. What stands at different heights is at different ranges, too: a contradiction counts while
 * the ranges change and their ratio does not. Pairs that agree again and again are forgotten.
 */
class QV_API Contradictions {
 public:
  struct Sight {
    const std::string* sensor;
    PlanarView view;
  };

  /** Compares the views of two sensors at `now`, seconds, after `moved` seconds in motion. */
  void compare(const Sight& a, const Sight& b, double now, double moved);
  /** Forgets what was not compared for long. */
  void forget(double now);
  /** True if none contradicts another one, and none did lately. */
  bool isEmpty() const { return pairs.empty(); }

  struct Told {
    const std::string* other;
    double seconds;
    double own;
    double others;
  };
  /** The longest contradiction of this sensor that counts. */
  std::optional<Told> find(const std::string& sensor) const;

 private:
  struct Pair {
    double seenAt = 0.0;
    double seconds = 0.0;
    /** The comparisons in a row that agree; and that contradict, but by another ratio. */
    int agreements = 0;
    int deviations = 0;
    double leastRatio = 0.0;
    double mostRatio = 0.0;
    double leastRange = 0.0;
    double mostRange = 0.0;
    PlanarView::Comparison last{};

    void add(const PlanarView::Comparison& seen);
    bool fits(const PlanarView::Comparison& seen) const;
    bool counts() const;
  };

  std::map<std::pair<const std::string*, const std::string*>, Pair> pairs;
};

}  // namespace QV::sensor
