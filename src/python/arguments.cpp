#include "python/arguments.h"

#include <cmath>

namespace zvr::python {

void refuseType(py::handle value, std::string_view name, std::string_view wanted) {
    const std::string given = value.is_none() ? "None" : value ? Py_TYPE(value.ptr())->tp_name : "nothing";
    throw py::type_error("'" + std::string(name) + "' must be " + std::string(wanted) + ", not " + given);
}

std::int64_t integerArgument(py::handle value, std::string_view name, std::int64_t least, std::uint64_t most) {
    if (PyIndex_Check(value.ptr()) == 0) refuseType(value, name, "an integer");
    const bool isPlain = PyLong_CheckExact(value.ptr()) != 0;
    const Object number = isPlain ? borrow(value.ptr()) : own(entering([&] { return PyNumber_Index(value.ptr()); }));
    int beyond = 0;
    const long long result = PyLong_AsLongLongAndOverflow(number.ptr(), &beyond);
    if (beyond != 0 || result < least || (result > 0 && static_cast<std::uint64_t>(result) > most)) {
        throw std::overflow_error("'" + std::string(name) + "' must be " + std::to_string(least) + " to " +
                                  std::to_string(most));
    }
    return result;
}

double realArgument(py::handle value, std::string_view name) {
    if (PyFloat_Check(value.ptr())) return PyFloat_AS_DOUBLE(value.ptr());
    const PyNumberMethods* slots = Py_TYPE(value.ptr())->tp_as_number;
    if (slots == nullptr || (slots->nb_float == nullptr && slots->nb_index == nullptr)) {
        refuseType(value, name, "a number");
    }
    const bool isPlain = PyLong_CheckExact(value.ptr()) != 0;
    const double number =
        isPlain ? PyLong_AsDouble(value.ptr()) : entering([&] { return PyFloat_AsDouble(value.ptr()); });
    if (number == -1.0 && PyErr_Occurred() != nullptr) throw py::error_already_set();
    return number;
}

Seconds secondsArgument(py::handle value, std::string_view name) {
    const double seconds = realArgument(value, name);
    if (std::isnan(seconds)) throw py::value_error("'" + std::string(name) + "' must be seconds, not nan");
    return {seconds};
}

std::string textArgument(py::handle value, std::string_view name) {
    if (PyUnicode_Check(value.ptr()) == 0) refuseType(value, name, "a string");
    Py_ssize_t size = 0;
    const char* const text = PyUnicode_AsUTF8AndSize(value.ptr(), &size);
    if (text == nullptr) throw py::error_already_set();
    return {text, static_cast<std::size_t>(size)};
}

bool isTrue(py::handle value) {
    const int answer = entering([&] { return PyObject_IsTrue(value.ptr()); });
    if (answer < 0) throw py::error_already_set();
    return answer != 0;
}

namespace detail {

bool isConstructed(py::handle object) {
    for (auto&& part : py::detail::values_and_holders(reinterpret_cast<py::detail::instance*>(object.ptr()))) {
        if (!part.holder_constructed()) return false;
    }
    return true;
}

std::string nameOfType(const std::type_info& type) {
    const auto* const known = py::detail::get_type_info(type);
    return known == nullptr ? "native object" : known->type->tp_name;
}

}  // namespace detail

}  // namespace zvr::python
