// Local conversions of what a caller gave.
#pragma once

#include "protocol/runtime.h"
#include "python/values.h"

namespace zvr::python {

using WithGil = py::gil_scoped_acquire;

[[noreturn]] inline void refuseType(py::handle value, std::string_view name, std::string_view wanted) {
    throw py::type_error(std::string(name) + ": " + Py_TYPE(value.ptr())->tp_name + " came, wanted is " +
                         std::string(wanted));
}

template <class T>
std::shared_ptr<T> nativeOrNothing(py::handle object) {
    if (!object || !py::isinstance<T>(object)) return nullptr;
    const auto held = reinterpret_cast<py::detail::instance*>(object.ptr())->get_value_and_holder();
    if (!held || !held.holder_constructed()) return nullptr;
    return py::cast<std::shared_ptr<T>>(object);
}

template <class T>
std::shared_ptr<T> native(py::handle object, std::string_view name = "self") {
    auto held = nativeOrNothing<T>(object);
    if (!held) refuseType(object, name, "a constructed object of its class");
    return held;
}

template <class T>
T argument(py::handle value, std::string_view name) {
    if constexpr (std::is_same_v<T, std::string>) {
        if (PyUnicode_Check(value.ptr()) == 0) refuseType(value, name, "a str");
        return py::cast<std::string>(value);
    } else if constexpr (std::is_same_v<T, double>) {
        if (PyFloat_Check(value.ptr()) == 0 && PyIndex_Check(value.ptr()) == 0) refuseType(value, name, "a float");
        return py::cast<double>(py::float_(borrow(value.ptr())));
    } else {
        if (PyIndex_Check(value.ptr()) == 0) refuseType(value, name, "an int");
        const auto number = PyNumber_AsSsize_t(value.ptr(), PyExc_OverflowError);
        if (number == -1 && PyErr_Occurred() != nullptr) throw py::error_already_set();
        if (number < std::numeric_limits<T>::min() || number > std::numeric_limits<T>::max()) {
            throw std::overflow_error(std::string(name) + " is out of range");
        }
        return static_cast<T>(number);
    }
}

}  // namespace zvr::python
