// The package's failures, its errors and warnings: a row per class in failures.def, one exception that carries a row.
#pragma once

#include <exception>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zvr {

enum class FailureId : int {
#define ZVR_FAILURE(name, base, hostBase, constant, code, message) name,
#define ZVR_FAILURE_LITERAL(name, base, hostBase, code, message) name,
#include "core/wire/failures.def"
#undef ZVR_FAILURE
#undef ZVR_FAILURE_LITERAL
};

struct FailureRow {
    std::string_view name;
    std::string_view base;      ///< "Error" or "ZVRWarning"
    std::string_view hostBase;  ///< its second base, a built-in class; empty if it has none
    std::string_view constant;  ///< name of the code constant; empty if the code has none
    int code;
    std::string_view message;
};

/// All failures, indexed by FailureId.
std::span<const FailureRow> failureTable();

inline const FailureRow& rowOf(FailureId id) { return failureTable()[static_cast<std::size_t>(id)]; }

/// The exception of the engine. The Python side converts it to the class of the same name; if it is nested, the
/// exception in it becomes the cause.
class Failure : public std::exception {
public:
    explicit Failure(FailureId id) : id_(id) {}
    Failure(FailureId id, std::string message) : id_(id), message_(std::move(message)) {}

    FailureId id() const noexcept { return id_; }
    /// The message given at the throw, or nothing for the class's own.
    const std::optional<std::string>& message() const noexcept { return message_; }
    /// Additional lines besides the message.
    const std::vector<std::string>& notes() const noexcept { return notes_; }
    Failure&& noting(std::string note) && {
        notes_.push_back(std::move(note));
        return std::move(*this);
    }
    const char* what() const noexcept override { return message_ ? message_->c_str() : rowOf(id_).message.data(); }

private:
    FailureId id_;
    std::optional<std::string> message_;
    std::vector<std::string> notes_;
};

/// The failure with a code, the one with a constant if two share it; empty if there is none.
std::optional<FailureId> failureOfCode(int code);

/// The error that a device's status byte stands for; empty for 0.
std::optional<FailureId> failureOfStatus(int status);

}  // namespace zvr
