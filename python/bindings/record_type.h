#pragma once

#include <pybind11/pybind11.h>

#include "python/bindings/records.h"

namespace QV::python {

/** A record of these, as Python sees it; nothing until its `__init__` has run. */
struct Record {
  SharedRecords owner;
  const Math::MetricalData* data = nullptr;
};

/**
 * The class Record, made without pybind11: an object of its kind costs three times as much, and a
 * reading has many. Once in a process.
 */
pybind11::object makeRecordType();

pybind11::object toPython(Record record);

bool isRecord(pybind11::handle object);
/**
 * Returns the record of an object of the class, or of one derived from it; TypeError for one that
 * was never made.
 */
Record& recordOf(pybind11::handle object);
/** The same, before it is made. */
Record& unmadeRecord(pybind11::handle object);

}  // namespace QV::python
