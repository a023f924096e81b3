// Which model an object is, for operations that models have in their own ways.
#pragma once

#include "python/common.h"

namespace zvr::python {

/// Whether the object is of one of these classes or derived from one.
bool isModel(py::handle self, std::initializer_list<const char*> names);

}  // namespace zvr::python
