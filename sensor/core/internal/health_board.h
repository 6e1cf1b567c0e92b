#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <limits>
#include <list>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "sensor/core/internal/contradictions.h"
#include "sensor/core/internal/health_judge.h"
#include "sensor/core/internal/health_log.h"
#include "sensor/core/internal/robot_motion.h"
#include "sensor/core/sensor.h"
#include "sensor/core/sensor_health.h"

namespace QV::sensor {

/**
 * The health of a manager's sensors: judges what their watches noted, remembers what they were
 * before, and tells of changes. What it is told by a refresh waits for nobody; judging never waits
 * for hardware. Any thread may call any operation.
 */
class QV_API HealthBoard {
 public:
  using Sensors = std::map<std::string, boost::shared_ptr<Sensor>>;
  using Callback = boost::function<void(const std::string& sensor, const SensorHealth& health)>;

  /** The sensors, which may come later but never go, must outlive it. */
  explicit HealthBoard(const Sensors& sensors) : sensors(sensors) {}

  /** Describes a sensor before its first start; `period` is the time between two measurements. */
  void describe(const Sensor& sensor, const HealthNature& nature, ko::Duration period);
  void setLimit(const std::string& sensor, HealthLimit limit, std::optional<double> value);
  std::optional<double> getLimit(const std::string& sensor, HealthLimit limit);
  void setCallback(Callback newCallback);
  void setOn(bool on);
  /** Watches readings, and judges at ticks, from now on; the first question or callback does it
   * otherwise. */
  void beAsked();
  bool isWatching() const { return isOn; }

  /** Says that all are read again and again, as of now. */
  void setRefreshed(bool on);
  /** True if a record looks too old, and only the device manager's clock can tell if it is. */
  bool asksDeviceTime() const { return asksDevice; }
  /** Takes what the device manager's clock says, and what the robot does. For one thread at a
   * time. */
  void noteDeviceTime(ko::Clock::time_point time);
  void noteVelocity(const Math::Pose2D& velocity);

  /**
   * Judges all, and tells of changes; not if that was less than `period` ago, or another thread
   * does it already.
   */
  void tick(ko::Duration period = ko::Duration::zero());

  std::optional<SensorHealth> get(const std::string& sensor);
  std::map<std::string, SensorHealth> getAll();

 private:
  struct Entry {
    const Sensor* sensor = nullptr;
    HealthLimits limits = HealthLimits();
    HealthTrack track = {};
    HealthFinding shown = {};
    ko::Clock::time_point since = ko::Clock::now();
    /** The time at which what is shown was last found. */
    ko::Clock::time_point foundAt = since;
    /** The number of times that it came into each state. */
    std::array<int, kHealthStateCount> times = {1};
  };
  using Entries = std::map<std::string, Entry>;
  /** What a tick looks at first: as a rule there is nothing to judge. */
  struct Glance {
    const SensorWatch* watch;
    const std::string* name;
    Entry* entry;
    /** True if it is to be compared with others. */
    bool compares;
    /** True if it was sound when it was judged last, and nothing contradicts it. */
    bool wasSound = false;
  };
  /** A change to be told of, and its line in the log, if it has one. */
  struct Change {
    std::string sensor;
    SensorHealth health;
    std::optional<HealthLine> line;
  };
  using Lock = std::unique_lock<std::mutex>;

  /** The time after a leap of the clock, or after a pause, in which no new fault is believed. */
  static constexpr ko::Duration kSettling{1'000'000'000};

  void xWatchAll(bool on) const;
  void xAddNew();
  HealthMoment xMoment() const;
  /** Finds the sensor whose reading does not return; null if none hangs. */
  const std::string* xFindHanging(std::int64_t now) const;
  void xListGlances();
  void xJudgeAll(bool isTick);
  HealthFinding xJudge(Entry& entry, const HealthMoment& moment,
                       const RobotMotion::State* moved) const;
  void xNoteTick(ko::Clock::time_point now);
  void xNoteJump(ko::Clock::time_point now);
  bool xIsTimeToCompare(ko::Clock::time_point now) const;
  void xCompareViews(ko::Clock::time_point now);
  void xFindContradiction(Glance& glance) const;
  void xSettle(const std::string& name, Entry& entry, const HealthFinding& finding,
               const HealthMoment& moment);
  bool xIsHeld(const Entry& entry, const HealthFinding& finding, ko::Clock::time_point now) const;
  SensorHealth xTell(const Entry& entry) const;
  std::int64_t xFindRelatedSince(const Entry& entry) const;
  std::optional<ko::log::Record> xFindTrouble(const Entry& entry) const;
  void xCallBack(Lock& lock);

  // Members that every reading or refresh uses come first.
  /** The last tick that judged, ns. */
  std::atomic<std::int64_t> tickedAt{std::numeric_limits<std::int64_t>::min() / 2};
  std::atomic<bool> isOn{true};
  std::atomic<bool> isAsked{false};
  std::atomic<bool> asksDevice{false};
  std::atomic<bool> isRefreshed{false};
  RobotMotion motion;
  const Sensors& sensors;
  std::vector<Glance> glances;
  Entries entries;
  Contradictions contradictions;
  std::vector<Contradictions::Sight> sights;
  std::atomic<std::int64_t> deviceOffset{0};
  std::atomic<std::int64_t> deviceNotedAt{0};

  /** The last tick, by our clock and by the machine's. */
  ko::Clock::time_point tickAt;
  std::chrono::steady_clock::time_point tickByMachine;
  /** The end of that time. */
  ko::Clock::time_point settledAt;
  ko::Clock::time_point comparedAt;
  /** The time at which the device manager's clock was last wanted. */
  ko::Clock::time_point askedAt;
  /** The robot's turns and ways up to then. */
  double comparedMotion = 0.0;

  Callback callback;
  HealthLog log;
  std::list<Change> changes;
  bool isCallingBack = false;
  std::mutex mutex;
};

}  // namespace QV::sensor
