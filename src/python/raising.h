// How exceptions of C++ become exceptions of Python.
#pragma once

#include "core/wire/failures.h"
#include "python/common.h"

namespace zvr::python {

/// Sets the exception that is being handled as Python's; to be called in a catch block.
void raiseCurrent() noexcept;

/// Lets the constructors that pybind11 calls fail in the same way.
void prepareRaising();

/// The Python class of a failure.
py::handle failureClass(FailureId id);
void setFailureClass(FailureId id, Object failureClass);

/// Whether a Python exception is one of this class.
bool isFailure(const py::error_already_set& error, FailureId id);

/// Adds a line to what is told of an exception, where the host has such lines (Python 3.11 on).
void addNote(py::handle error, const std::string& note);
void addNotes(py::handle error, std::span<const std::string> notes);
/// A value as a note shows it: cut where it is long, and a stand-in where it cannot be shown.
std::string shown(py::handle value);

/// Reports an error that ends a thread of the library through the host's threading.excepthook.
void reportThreadFailure(const std::string& threadName, std::exception_ptr error) noexcept;

}  // namespace zvr::python
