// The C type of every method and function of the package.
//
// It has the vectorcall protocol and the flag of a method descriptor, so that a call through an instance makes no bound
// method, and `__text_signature__` for inspect.signature and help(). Its attributes `__stub__` and `__exchange__` feed
// the type stub and the reference page.
#pragma once

#include "python/definition.h"

namespace zvr::python {

enum class Form {
    function,   ///< of the module: no object
    method,     ///< of a class, as defined
    blocking,   ///< an operation X(..., timeout=3)
    awaitable,  ///< its async variant X_async(...)
};

/// The name of a definition in a form: an async variant ends in "_async".
std::string nameIn(const Definition& definition, Form form);

/// Makes the callable of a kept definition. `owner` is the name of the class that it goes into, empty for a function.
Object makeOperation(const Definition& definition, Form form, const std::string& owner);

bool isOurOperation(py::handle object);

/// Whether the object's attribute of this name is a method of the library that has not been replaced.
bool hasOwnMethod(py::handle object, const char* name);

void prepareOperationType(py::module_& module);

}  // namespace zvr::python
