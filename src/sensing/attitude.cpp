// The inertial unit. Its filter runs in the device; the host sets it up and asks for what it estimates.
#include "core/engine/scale.h"
#include "core/wire/failures.h"
#include "digital/pin_map.h"
#include "sensing/sensing.h"

namespace zvr::python {

namespace {

const Parameter port{"port", "int", "port of the inertial unit"};
const std::vector<Check> portChecks{calls("_checkAHRSPort", {"port"})};
constexpr PinnedPorts unitPorts{"AHRS", "ahrs_dict", "ahrs_port", FailureId::AHRSPortNotAvaliableError};

/// Groups of three values in a reply, in the order of their bits.
enum Group : std::uint8_t { orientation = 1, angularVelocity = 4, acceleration = 16 };

constexpr std::array<int, 7> maskOfMode{orientation,
                                        acceleration,
                                        angularVelocity,
                                        orientation | acceleration,
                                        orientation | angularVelocity,
                                        angularVelocity | acceleration,
                                        orientation | angularVelocity | acceleration};
constexpr std::size_t estimatesPlace = 2, rawPlace = 1, all = std::numeric_limits<std::size_t>::max();

// Angles come first, and may be wanted in degrees.
py::list rounded(ByteView bytes, std::size_t inDegrees) {
    py::list values;
    for (const double value : readNumbers<float>(bytes)) {
        const bool isAngle = values.size() < inDegrees;
        values.append(roundDecimals(isAngle ? value * 180 / std::numbers::pi : value, 4));
    }
    return values;
}

Reply roundedFrom(std::size_t place, std::size_t inDegrees, const std::string& doc) {
    return {
        [place, inDegrees](py::handle, const Bytes& data) -> Object { return rounded(restOf(data, place), inDegrees); },
        {"list[float]", doc + ", rounded to 4 decimals", "the device"}};
}

Row estimateRow(const char* name, Group group, std::size_t inDegrees, const char* doc, const char* summary) {
    return {name,
            {port},
            portChecks,
            AHRS_GET_ESTIMATES,
            {u8("port"), constant(group)},
            roundedFrom(estimatesPlace, inDegrees, doc),
            summary};
}

constexpr auto checkMode = checkAccepted<FailureId::AHRSModeNotAvaliableError, 0, 1, 2, 3, 4, 5, 6>;

Result open(Op op, Object port) {
    op.call("_checkAHRSPort", port);
    const Object reply = co_await op.exchange(AHRS_OPEN, payload(port));
    Object status = py::int_(0);
    const Object opened = statusOf(bytesOf(reply, "reply"), 1);
    if (opened > status) status = opened;
    const Object set = co_await op.request("_AHRS_setSamplingPeriod", port, py::float_(0.003));
    co_return set > status ? set : status;
}

Result start(Op op, Object port) {
    op.call("_checkAHRSPort", port);
    co_await op.same("_sendPacketWithoutReply", py::int_(int{AHRS_START}), payload(port, 0));
    co_return py::int_(0);
}

Result getEstimate(Op op, Object port, Object mode) {
    op.call("_checkAHRSPort", port);
    op.call("_checkAHRSMode", mode);
    const Object mask = op.call("_convertModeToMask", mode);
    const Object reply = co_await op.exchange(AHRS_GET_ESTIMATES, payload(port, mask));
    const std::size_t inDegrees = isOneOf(mode, {0}) ? all : isOneOf(mode, {3, 4, 6}) ? 3 : 0;
    co_return rounded(restOf(bytesOf(reply), estimatesPlace), inDegrees);
}

}  // namespace

void defineAttitude(Package& package) {
    const Parameter mode{"mode", "int",
                         "0 orientation, 1 acceleration, 2 angular velocity, 3 orientation and acceleration, 4 "
                         "orientation and angular velocity, 5 angular velocity and acceleration, 6 all three"};
    const Parameter period{"sampling_period", "float", "seconds between two steps of the filter, 32-bit float"};
    const auto number = [](const char* name, const char* doc) { return Parameter{name, "float", doc}; };
    const auto portRow = [](const char* name, Command command, const char* summary) {
        return Row{name, {port}, portChecks, command, {u8("port")}, status(1), summary};
    };
    const auto numbers = [](std::initializer_list<const char*> names) {
        std::vector<Check> checks;  // not of the port: the device judges it
        for (const char* name : names) checks.push_back(isNumber(name));
        return checks;
    };
    Feature ahrs(package, "AHRS", "The inertial unit.");
    definePortCheck<unitPorts>(ahrs)
        .offers({{"ahrs_dict", "dict[int, list[int]]", "ports of the inertial unit"}})
        .shared("_checkAHRSMode", {mode}, "Refuses another mode.", {},
                {"InputTypeNotCorrectError: `mode` is no integer", "AHRSModeNotAvaliableError: another mode"},
                Calls<checkMode>{})
        .shared("_convertModeToMask", {mode}, "Mode as the device's mask.",
                {"int", "sum of 1 orientation, 4 angular velocity, 16 acceleration"},
                {"AHRSModeNotAvaliableError: another mode"},
                [](py::handle self, const Object& mode) {
                    checkMode(self, mode);
                    std::size_t number = 0;
                    while (number + 1 < maskOfMode.size() && !mode.equal(py::int_(number))) ++number;
                    return maskOfMode[number];
                })
        .operation("AHRS_open", {port}, "Opens the unit, and has its filter make a step every 3 ms.",
                   {"int", "0: the statuses of both steps merged, in which a refusal does not show", "the device"},
                   {"@_checkAHRSPort"}, Calls<open>{})
        .operation("AHRS_start", {port}, "Starts the filter; there is no reply.", {"int", "0"}, {"@_checkAHRSPort"},
                   Calls<start>{})
        .operation("AHRS_getEstimate", {port, mode}, "Reads estimates of one moment.",
                   {"list[float]",
                    "three values of each quantity: angles in degrees first, then angular velocity, then acceleration, "
                    "in the device's units; rounded to 4 decimals",
                    "the device"},
                   {"@_checkAHRSPort", "@_checkAHRSMode"}, Calls<getEstimate>{});
    // clang-format off
    ahrs.rows({
        portRow("AHRS_stop",  AHRS_STOP,  "Stops the filter."),
        portRow("AHRS_close", AHRS_CLOSE, "Closes the unit."),
        portRow("AHRS_reset", AHRS_RESET, "Starts the filter anew."),
        estimateRow("AHRS_getOrientation", orientation, all, "three angles in degrees", "Reads the orientation."),
        estimateRow("AHRS_getOrientation_rad", orientation, 0, "three angles in radians", "Reads the orientation."),
        estimateRow("AHRS_getAcceleration_rad", acceleration, 0, "three values in the device's unit",
            "Reads the acceleration."),
        estimateRow("AHRS_getAngularVelocity_rad", angularVelocity, 0, "three values in the device's unit",
            "Reads the angular velocity."),
        {"_AHRS_getRawdata", {port}, {}, AHRS_GET_RAW_DATA, {u8("port"), constant(1)},
            roundedFrom(rawPlace, 0, "what the sensors measure, in the device's units"), "Reads the sensors."},
        {"_AHRS_setGeneral",
            {port, number("gravity", "in m/s2"), number("dt", "seconds between two steps of the filter"),
             number("z_offset", "in the device's unit")},
            numbers({"gravity", "dt", "z_offset"}), AHRS_SET_GNRL,
            {u8("port"), f32("gravity"), f32("dt"), f32("z_offset")}, status(1), "Sets up the unit."},
    });
    // clang-format on
    ahrs.operation("_AHRS_setSamplingPeriod", {port, period},
                   "Sets the step of the filter, with a gravity of 9.81 and an offset of 0.001.", status(1).returns,
                   {"@_AHRS_setGeneral"}, [](Op op, Object port, Object period) -> Result {
                       const py::float_ gravity(9.81), offset(0.001);
                       co_return co_await op.request("_AHRS_setGeneral", port, gravity, period, offset);
                   });
    Definition tau = defineExchange(
        {"_AHRS_VQF_setTau",
         {port, number("accelerator_decay_time", "in seconds"), number("magnetometer_decay_time", "in seconds")},
         numbers({"accelerator_decay_time", "magnetometer_decay_time"}),
         AHRS_VQF_SET_TAU,
         {u8("port"), f32("accelerator_decay_time"), f32("magnetometer_decay_time")},
         status(1),
         "Sets how long the filter takes to follow a sensor."});
    // Both forms have this name. A product has the blocking one.
    tau.twin = tau.name;
    ahrs.add(std::move(tau));
}

}  // namespace zvr::python
