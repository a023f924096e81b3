// The fields of a logger's object that its thread uses: ordinary attributes that notify the thread of changes.
#pragma once

#include "analog/log_thread.h"

namespace zvr::python {

/// Adds the fields to the class.
void defineLogFields(py::handle type);

/// The thread of an object; null if it has none.
std::shared_ptr<LogThread> keptLogThread(py::handle self);

/// Makes it the object's thread; a previous one ends.
void keepLogThread(py::handle self, std::shared_ptr<LogThread> thread);

}  // namespace zvr::python
