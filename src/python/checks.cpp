// The checks of arguments and of a device's status, which users may replace in the module.
#include <algorithm>

#include "core/wire/failures.h"
#include "python/raising.h"
#include "python/values.h"

namespace zvr::python {

namespace {

/// A function of the package that operations call, and that users may replace in the module.
class PackageFunction {
public:
    explicit PackageFunction(const char* name) : name_(name) {}

    void remember(py::handle module) {
        names_ = PyModule_GetDict(module.ptr());
        key_ = interned(name_);
        own_ = PyDict_GetItemWithError(names_, key_);
    }

    /// The user's replacement; empty while it is the library's own function.
    Object replacement() const {
        PyObject* const now = PyDict_GetItemWithError(names_, key_);
        if (now == own_) return {};
        if (now == nullptr) {
            if (PyErr_Occurred() != nullptr) throw py::error_already_set();
            throw py::attribute_error(std::string("module 'pyzvr' has no attribute '") + name_ + "'");
        }
        return borrow(now);
    }

private:
    const char* const name_;
    PyObject *names_ = nullptr, *key_ = nullptr, *own_ = nullptr;  // the module keeps them
};

PackageFunction firmwareCheck("checkFirmwareError"), typeCheck("checkInputType"),
    sameTypeCheck("checkInputTypeConsistent"), itemCheck("checkEachItemInRange"), pinCheck("checkFuncPinMap");

bool isOfType(py::handle value, py::handle type) {
    if (PyAnySet_Check(type.ptr()) || PyList_Check(type.ptr())) {
        return isOfType(value, py::tuple(borrow(type.ptr())));
    }
    const int result = PyObject_IsInstance(value.ptr(), type.ptr());
    if (result < 0) throw py::error_already_set();
    return result != 0;
}

// The note names the type: other libraries' integers look like plain ones.
[[noreturn]] void refuseInput(py::handle value, const std::string& wanted, const char* name = nullptr) {
    std::string note = name == nullptr ? "" : "'" + std::string(name) + "': ";
    note += std::string(Py_TYPE(value.ptr())->tp_name) + " came, " + wanted + " is wanted";
    if (PyIndex_Check(value.ptr()) != 0) note += "; int(value) makes a plain integer of it";
    throw Failure(FailureId::InputTypeNotCorrectError).noting(note + "; the value is " + shown(value));
}

// The name of a type, or of each type of a tuple.
std::string namesOf(py::handle type) {
    const Object name = attributeOrNothing(type, "__name__");
    if (name) return py::str(name);
    if (PyTuple_Check(type.ptr()) == 0 && PyAnySet_Check(type.ptr()) == 0 && PyList_Check(type.ptr()) == 0) {
        return py::str(type);
    }
    std::string names;
    for (const py::handle each : py::tuple(borrow(type.ptr()))) names += (names.empty() ? "" : " or ") + namesOf(each);
    return names;
}

template <class... Types>
void checkIs(py::handle value, const char* name, bool isRight, Types*... types) {
    if (const Object check = typeCheck.replacement()) {
        const auto asObject = [](PyTypeObject* type) { return borrow(reinterpret_cast<PyObject*>(type)); };
        if constexpr (sizeof...(types) == 1) {
            callObject(check, value, asObject(types...));
        } else {
            callObject(check, value, py::make_tuple(asObject(types)...));
        }
        return;
    }
    if (isRight) return;
    std::string wanted;
    ((wanted += (wanted.empty() ? "" : " or ") + std::string(types->tp_name)), ...);
    refuseInput(value, wanted, name);
}

}  // namespace

void rememberChecks(py::handle module) {
    for (PackageFunction* each : {&firmwareCheck, &typeCheck, &sameTypeCheck, &itemCheck, &pinCheck}) {
        each->remember(module);
    }
}

Object refusalOf(const Object& status) {
    if (const Object check = firmwareCheck.replacement()) {
        try {
            callObject(check, status);
        } catch (const py::error_already_set& error) {
            if (!error.matches(PyExc_Exception)) throw;
            return attribute(error.value(), "code");
        }
        return {};
    }
    int overflow = 0;
    const long number = PyLong_AsLongAndOverflow(integerOf(status, "error_code").ptr(), &overflow);
    if (overflow == 0 && number == 0) return {};
    const bool isKnown = overflow == 0 && number > 0 && number <= 255;
    return py::int_(rowOf(*failureOfStatus(isKnown ? static_cast<int>(number) : -1)).code);
}

void checkInputType(py::handle value, py::handle type) {
    if (!isOfType(value, type)) refuseInput(value, namesOf(type));
}

void checkIsInt(py::handle value, const char* name) {
    checkIs(value, name, PyLong_Check(value.ptr()) != 0, &PyLong_Type);
}
void checkIsNumber(py::handle value, const char* name) {
    checkIs(value, name, PyLong_Check(value.ptr()) || PyFloat_Check(value.ptr()), &PyLong_Type, &PyFloat_Type);
}
void checkIsBool(py::handle value, const char* name) { checkIs(value, name, PyBool_Check(value.ptr()), &PyBool_Type); }
void checkIsList(py::handle value, const char* name) {
    checkIs(value, name, PyList_Check(value.ptr()) != 0, &PyList_Type);
}
void checkIsIntOrList(py::handle value, const char* name) {
    checkIs(value, name, PyLong_Check(value.ptr()) || PyList_Check(value.ptr()), &PyLong_Type, &PyList_Type);
}
void checkIsText(py::handle value, const char* name) {
    checkIs(value, name, PyUnicode_Check(value.ptr()) != 0, &PyUnicode_Type);
}
void checkIsTextOrList(py::handle value, const char* name) {
    checkIs(value, name, PyUnicode_Check(value.ptr()) || PyList_Check(value.ptr()), &PyUnicode_Type, &PyList_Type);
}

void checkEachItemInRange(py::handle values, py::handle low, py::handle high, py::handle message) {
    eachOf(values, "int_list", [&](const Object& item) {
        if (!(item < low) && !(item > high)) return true;
        if (message.is_none()) throw Failure(FailureId::InputDataNotInRangeError);
        throw Failure(FailureId::InputDataNotInRangeError, std::string(py::str(message)));
    });
}

void checkItems(py::handle values, py::handle low, py::handle high, py::handle message) {
    if (const Object check = itemCheck.replacement()) {
        message ? callObject(check, values, low, high, message) : callObject(check, values, low, high);
    } else {
        checkEachItemInRange(values, low, high, message ? message : py::none());
    }
}

Failure notAmong(FailureId failure, py::handle accepted) {
    std::string values;
    for (const py::handle each : accepted) values += (values.empty() ? "" : ", ") + shown(each);
    return Failure(failure).noting("accepted here: " + (values.empty() ? "nothing" : values));
}

void checkSameType(py::handle first, py::handle second) {
    if (const Object check = sameTypeCheck.replacement()) {
        callObject(check, first, second);
    } else {
        checkInputTypeConsistent(first, second);
    }
}

bool isPinFree(py::handle cell, py::handle pinMap, py::handle allowed) {
    if (const Object check = pinCheck.replacement()) return truthOf(callObject(check, cell, pinMap, allowed));
    return checkFuncPinMap(cell, pinMap, allowed);
}

bool checkInputTypeConsistent(py::handle first, py::handle second) {
    if (Py_TYPE(first.ptr()) != Py_TYPE(second.ptr())) throw Failure(FailureId::InputTypeNotConsistentError);
    return true;
}

bool checkFuncPinMap(py::handle cell, py::handle pinMap, py::handle allowed) {
    if (PySequence_Check(cell.ptr()) == 0) refuseType("cell", "a pair of port and pin", cell);
    const Object pin = own(entering([&] { return PySequence_GetItem(cell.ptr(), 1); }));
    const Object state = own(entering([&] { return PyObject_GetItem(pinMap.ptr(), pin.ptr()); }));
    const int contained = entering([&] { return PySequence_Contains(allowed.ptr(), state.ptr()); });
    if (contained < 0) throw py::error_already_set();
    return contained != 0;
}

bool checkPinMap(py::handle cells, py::handle pinMap, py::handle allowed) {
    bool allFree = true;
    eachOf(cells, "cell_list", [&](const Object& cell) { return allFree = isPinFree(cell, pinMap, allowed); });
    return allFree;
}

}  // namespace zvr::python
