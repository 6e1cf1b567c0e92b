#pragma once

#include <pybind11/pybind11.h>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/math/metrical_data.h"
#include "python/bindings/casters.h"

namespace QV::python {

/** Records that nobody changes any more, wherever they are kept. */
using SharedRecords = boost::shared_ptr<const std::vector<Math::MetricalData>>;

/** Converts without a copy: all, or for each name in order those of that sensor or family. */
pybind11::list toPython(const SharedRecords& records, const Names& names = {});

/** A copy of the records that Python gives back from a sensor of its own. */
std::vector<Math::MetricalData> recordsFrom(pybind11::handle object);

}  // namespace QV::python
