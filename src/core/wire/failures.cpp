#include "core/wire/failures.h"

#include <algorithm>

namespace zvr {

namespace {

constexpr std::string_view unlessNone(std::string_view name) { return name == "none" ? "" : name; }

}  // namespace

std::span<const FailureRow> failureTable() {
    static constexpr FailureRow table[] = {
#define ZVR_FAILURE(name, base, hostBase, constant, code, message) \
    {#name, #base, unlessNone(#hostBase), #constant, code, message},
#define ZVR_FAILURE_LITERAL(name, base, hostBase, code, message) \
    {#name, #base, unlessNone(#hostBase), "", code, message},
#include "core/wire/failures.def"
#undef ZVR_FAILURE
#undef ZVR_FAILURE_LITERAL
    };
    return table;
}

std::optional<FailureId> failureOfCode(int code) {
    const auto rows = failureTable();
    const auto found =
        std::ranges::find_if(rows, [&](const FailureRow& row) { return row.code == code && !row.constant.empty(); });
    if (found == rows.end()) return std::nullopt;
    return FailureId(found - rows.begin());
}

std::optional<FailureId> failureOfStatus(int status) {
    switch (status) {
        case 0: return std::nullopt;
#define ZVR_FIRMWARE_STATUS(number, name) \
    case number:                          \
        return FailureId::name;
#include "core/wire/firmware_status.def"
#undef ZVR_FIRMWARE_STATUS
        default: return FailureId::FirmwareOtherError;
    }
}

}  // namespace zvr
