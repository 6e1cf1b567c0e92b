#pragma once

#include <cmath>
#include <exception>
#include <vector>

#include "platform/ko/log.h"
#include "platform/middleware/qv_value.h"
#include "sensor/real/real_sensor.h"

/** The floor beneath a cliff detector: a point at the minimum range where it is missing. */
class CliffSensor : public QV::sensor::RealSensor {
 public:
  using RealSensor::RealSensor;

 protected:
  std::vector<QV::Math::MetricalData> xGetData() const override try {
    const float range = memoryProxy->getData(memoryKeys.at(0)).toFloat();
    if (!std::isfinite(range) || range < 0.0f) return {};
    auto record = xGetMetricalDataMeta();
    record.sensorTransform = xGetTransformAtTime(record.timestamp);
    const bool isCliff = range > fieldOfView.maxRange;
    record.points = {{isCliff ? fieldOfView.minRange : fieldOfView.maxRange, 0.0f, 0.0f}};
    return {record};
  } catch (const std::exception& exception) {
    logTrouble(ko::log::Level::error, "Navigation.CliffSensor", "xGetData",
               name + ": " + exception.what());
    return {};
  }

  bool xSubscribeToHardware() override { return true; }
  bool xUnsubscribeFromHardware() override { return true; }
};
