#pragma once

#include <atomic>
#include <pybind11/pybind11.h>
#include <vector>

#include "python/bindings/records.h"
#include "sensor/core/sensor_manager.h"

namespace QV::python {

/** A manager of sensors in Python, which are read whenever somebody asks, one reader at a time. */
class SensorListManager : public sensor::SensorManager {
 public:
  /** TypeError for what is no sensor, ValueError for two of one name. */
  explicit SensorListManager(const pybind11::iterable& list);
  void setSensorsDebug(bool) override {}

  /** True while somebody reads: another reader may have to wait. */
  bool isBeingRead() const { return readers > 0; }

 protected:
  std::vector<Math::MetricalData> xGetData() const override { return *xShareData(); }
  SharedRecords xShareData() const override;
  void xOnSensorOnChanged(bool) override {}

 private:
  void xAdd(const boost::shared_ptr<sensor::Sensor>& sensor);

  mutable std::atomic<int> readers{0};
};

}  // namespace QV::python
