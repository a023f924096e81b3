// Converts C++ exceptions to Python exceptions.
#pragma once

#include "core/wire/failures.h"
#include "python/common.h"

namespace zvr::python {

/// Sets the exception that is being handled as Python's current exception; call it in a catch block.
void raiseCurrent() noexcept;

/// Applies this conversion to constructors called by pybind11.
void prepareRaising();

/// The Python class of a failure.
py::handle failureClass(FailureId id);
void setFailureClass(FailureId id, Object failureClass);

/// Whether a Python exception is one of this class.
bool isFailure(const py::error_already_set& error, FailureId id);

/// Adds a note to an exception, where Python has notes (3.11 on).
void addNote(py::handle error, const std::string& note);
void addNotes(py::handle error, std::span<const std::string> notes);
/// A value's repr for a note: shortened if long, a placeholder if it fails.
std::string shown(py::handle value);

/// Reports an error that ends a thread of the library through threading.excepthook.
void reportThreadFailure(const std::string& threadName, std::exception_ptr error) noexcept;

}  // namespace zvr::python
