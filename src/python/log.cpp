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

bool Log::listens(LogLevel level) {
    bool listens = false;
    reportingErrors([&] { listens = isTrue(callMethod(logger(), "isEnabledFor", py::int_(static_cast<int>(level)))); });
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
