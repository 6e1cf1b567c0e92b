#pragma once

namespace QV::python {

/**
 * A scope in which a sensor written in Python is at work in a thread. The sensor holds locks
 * meanwhile, which a manager that it asked would wait for without end.
 */
class InSensor {
 public:
  InSensor();
  ~InSensor();
  InSensor(const InSensor&) = delete;
  InSensor& operator=(const InSensor&) = delete;

  /** RuntimeError on a thread in which one is at work. */
  static void refuse();
};

}  // namespace QV::python
