// The row of an object's model, for operations that differ between models.
#pragma once

#include "models/model.h"
#include "python/common.h"

namespace zvr::python {

/// The row of an object's class, or of the first of its bases that is a model. A class that derives from no model has
/// the defaults, and the family of its device class. Classes are identified by name.
const Model& traitsOf(py::handle self);
/// The row with this display name, or the defaults.
const Model& traitsNamed(py::handle displayName);

/// The year that the device's clock counts from; depends also on the current display name.
int firstYearOf(py::handle self);

/// The port in the device's numbering.
Object devicePort(py::handle self, const Object& port);
/// The same for the first argument of an operation.
void adaptPort(py::handle self, std::vector<Object>& arguments);

}  // namespace zvr::python
