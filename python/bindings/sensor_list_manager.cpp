#include "python/bindings/sensor_list_manager.h"

#include "python/bindings/common.h"
#include "python/bindings/sensors.h"

namespace QV::python {
namespace {

/** Counts a reader for a scope. */
class Reader {
 public:
  explicit Reader(std::atomic<int>& readers) : readers(readers) { ++readers; }
  ~Reader() { --readers; }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

 private:
  std::atomic<int>& readers;
};

}  // namespace

SensorListManager::SensorListManager(const py::iterable& list) {
  for (const py::handle item : list) {
    if (!py::isinstance<PythonSensor>(item))
      throw py::type_error("Sensors expected, " + describe(item) + " given");
    xAdd(
        shareWithPython<boost::shared_ptr, PythonSensor>(py::reinterpret_borrow<py::object>(item)));
  }
}

SharedRecords SensorListManager::xShareData() const {
  const Reader reader(readers);
  xUpdateData();
  return xShareCache();
}

void SensorListManager::xAdd(const boost::shared_ptr<sensor::Sensor>& sensor) {
  if (!sensors.emplace(sensor->getName(), sensor).second)
    throw py::value_error("a name for each sensor expected, two called " + sensor->getName() +
                          " given");
  families[sensor->getFamilyName()].insert(sensor->getName());
}

}  // namespace QV::python
