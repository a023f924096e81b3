// The fields of a logger's object that its thread looks at, as ordinary attributes that tell the thread of a change.
#pragma once

#include "analog/log_thread.h"

namespace zvr::python {

/// Puts the fields into the class.
void defineLogFields(py::handle type);

/// The thread of an object; nothing if it has none.
std::shared_ptr<LogThread> keptLogThread(py::handle self);

/// Makes it the object's own; the one before, if any, ends.
void keepLogThread(py::handle self, std::shared_ptr<LogThread> thread);

}  // namespace zvr::python
