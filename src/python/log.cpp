#include "python/log.h"

#include "python/arguments.h"

namespace zvr::python {

Log eventLog("pyzvr"), frameLog("pyzvr.wire");

bool Log::listens(LogLevel level) noexcept {
    try {
        return isTrue(callMethod(logger(), "isEnabledFor", py::int_(static_cast<int>(level))));
    } catch (...) {
        reportUnraisable();
        return false;
    }
}

void Log::tell(LogLevel level, const std::function<std::string()>& text) noexcept {
    if (!listens(level)) return;
    try {
        // Passed as an argument, since the text may contain a "%".
        callMethod(logger(), "log", py::int_(static_cast<int>(level)), py::str("%s"), py::str(text()));
    } catch (...) {
        reportUnraisable();
    }
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
