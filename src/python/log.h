// The library's messages through Python's logging. It is silent unless the program configures logging.
#pragma once

#include <functional>

#include "python/common.h"

namespace zvr::python {

enum class LogLevel : int { debug = 10, info = 20, warning = 30, error = 40 };

/// A Python logger. Its members are called under the interpreter lock; exceptions of logging are reported as
/// unraisable.
class Log {
public:
    constexpr explicit Log(const char* name) : name_(name) {}

    /// Whether messages of this level are logged.
    bool listens(LogLevel level) noexcept;
    /// `text` is only called if the level is logged.
    void tell(LogLevel level, const std::function<std::string()>& text) noexcept;

private:
    py::handle logger();

    const char* name_;
    PyObject* logger_ = nullptr;  // logging keeps it for the life of the process
};

extern Log eventLog, frameLog;  ///< "pyzvr" and "pyzvr.wire"

inline void logEvent(LogLevel level, const std::function<std::string()>& text) noexcept { eventLog.tell(level, text); }

}  // namespace zvr::python
