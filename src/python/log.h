// The library's messages through Python's logging. It is silent unless the program configures logging.
#pragma once

#include <functional>

#include "python/common.h"

namespace zvr::python {

enum class LogLevel : int { debug = 10, info = 20, warning = 30, error = 40 };

/// A logger of the host. Its members are called under the interpreter lock; errors that logging raises are reported as
/// unraisable, and only interrupts go through.
class Log {
public:
    constexpr explicit Log(const char* name) : name_(name) {}

    /// Whether somebody listens.
    bool listens(LogLevel level);
    /// `text` is only called if somebody does.
    void tell(LogLevel level, const std::function<std::string()>& text);

private:
    py::handle logger();
    bool isPlain();
    py::handle keptAnswer(py::handle level);

    const char* name_;
    PyObject* logger_ = nullptr;  // logging keeps it for the life of the process
    // What `isPlain` has found, for a version of the class.
    PyTypeObject* type_ = nullptr;
    unsigned version_ = 0;
    bool isPlain_ = false;
};

extern Log eventLog, frameLog;  ///< "pyzvr" and "pyzvr.wire"

inline void logEvent(LogLevel level, const std::function<std::string()>& text) { eventLog.tell(level, text); }

}  // namespace zvr::python
