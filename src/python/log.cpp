#include "python/log.h"

#include "python/arguments.h"

namespace zvr::python {

Log eventLog("pyzvr"), frameLog("pyzvr.wire");

namespace {

// Interrupts may arrive in any code of Python, and go on.
template <class Step>
void reportingErrors(Step step) {
    try {
        step();
    } catch (const py::error_already_set& error) {
        if (!error.matches(PyExc_Exception)) throw;
        reportUnraisable();
    } catch (...) {
        reportUnraisable();
    }
}

}  // namespace

// Whether the methods and fields that Logger.isEnabledFor uses are those of the host's class.
bool Log::isPlain() {
    PyTypeObject* const type = Py_TYPE(logger().ptr());
    if (type == type_ && type->tp_version_tag == version_ && PyType_HasFeature(type, Py_TPFLAGS_VALID_VERSION_TAG)) {
        return isPlain_;
    }
    const py::handle asType(reinterpret_cast<PyObject*>(type));
    const Object method = attribute(asType, "isEnabledFor"), module = py::module_::import("logging");
    isPlain_ = PyFunction_Check(method.ptr()) != 0 &&
               PyFunction_GET_GLOBALS(method.ptr()) == PyModule_GetDict(module.ptr()) &&
               type->tp_getattro == PyObject_GenericGetAttr && !attributeOrNothing(asType, "_cache") &&
               !attributeOrNothing(asType, "disabled");
    type_ = type;
    version_ = type->tp_version_tag;
    return isPlain_;
}

// The answer that Logger.isEnabledFor keeps, or null if it is to be called, which takes as long as a tenth of a
// request.
py::handle Log::keptAnswer(py::handle level) {
    if (!isPlain()) return {};
    const py::dict fields = dictionaryOf(logger());
    const auto field = [&](const char* name) { return PyDict_GetItemWithError(fields.ptr(), interned(name)); };
    PyObject* const answers = field("_cache");
    const bool isKept = answers != nullptr && PyDict_CheckExact(answers) != 0 && field("isEnabledFor") == nullptr &&
                        field("disabled") == Py_False;
    return isKept ? PyDict_GetItemWithError(answers, level.ptr()) : nullptr;
}

bool Log::listens(LogLevel level) {
    bool listens = false;
    reportingErrors([&] {
        const py::int_ number(static_cast<int>(level));
        const py::handle kept = keptAnswer(number);
        listens = isTrue(kept ? borrow(kept.ptr()) : callMethod(logger(), "isEnabledFor", number));
    });
    return listens;
}

void Log::tell(LogLevel level, const std::function<std::string()>& text) {
    if (!listens(level)) return;
    // As an argument the text may hold a "%".
    reportingErrors(
        [&] { callMethod(logger(), "log", py::int_(static_cast<int>(level)), py::str("%s"), py::str(text())); });
}

py::handle Log::logger() {
    if (logger_ == nullptr) {
        Object made = callObject(pythonObject("logging", "getLogger"), py::str(name_));
        // Without a handler, warnings would be printed in programs that do not configure logging.
        callMethod(made, "addHandler", callObject(pythonObject("logging", "NullHandler")));
        logger_ = made.release().ptr();
    }
    return logger_;
}

}  // namespace zvr::python
