#include "core/wire/failures.h"

namespace zvr {

std::span<const FailureRow> failureTable() {
    static constexpr FailureRow table[] = {
#define ZVR_FAILURE(name, base, constant, code, message) {#name, #base, #constant, code, message},
#define ZVR_FAILURE_LITERAL(name, base, code, message) {#name, #base, "", code, message},
#include "core/wire/failures.def"
#undef ZVR_FAILURE
#undef ZVR_FAILURE_LITERAL
    };
    return table;
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
