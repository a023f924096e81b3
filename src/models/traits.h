// Which model an object is, for operations that models have in their own ways.
#pragma once

#include <vector>

#include "python/common.h"

namespace zvr::python {

/// Whether the object is of one of these classes or derived from one.
bool isModel(py::handle self, std::initializer_list<const char*> names);

/// The port as the device counts it: the chassis counts slots from 1.
Object devicePort(py::handle self, const Object& port);
/// The same for the first argument of an operation.
void adaptPort(py::handle self, std::vector<Object>& arguments);

}  // namespace zvr::python
