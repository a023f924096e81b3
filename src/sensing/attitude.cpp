// The inertial unit. Its filter runs in the device; the host configures it and reads its estimates.
#include "core/engine/scale.h"
#include "core/wire/failures.h"
#include "digital/pin_map.h"
#include "sensing/sensing.h"

namespace zvr::python {

namespace {

const Parameter port{"port", "int", "port of the inertial unit"};
constexpr PinnedPorts unitPorts{"AHRS", "ahrs_dict", "ahrs_port", FailureId::AHRSPortNotAvaliableError};
const Definition checkPort = portCheck(unitPorts);

/// Groups of three values in a reply, in the order of their bits.
enum Group : std::uint8_t { orientation = 1, angularVelocity = 4, acceleration = 16 };

constexpr std::array<int, 7> maskOfMode{orientation,
                                        acceleration,
                                        angularVelocity,
                                        orientation | acceleration,
                                        orientation | angularVelocity,
                                        angularVelocity | acceleration,
                                        orientation | angularVelocity | acceleration};
void acceptMode(const Object& mode) {
    checkIsInt(mode, "mode");
    if (!isOneOf(mode, {0, 1, 2, 3, 4, 5, 6})) throw Failure(FailureId::AHRSModeNotAvaliableError);
}

constexpr std::size_t estimatesPlace = 2, rawPlace = 1, all = std::numeric_limits<std::size_t>::max();

// Angles come first, and may be converted to degrees.
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

Request estimates(const char* name, Group group, std::size_t inDegrees, const char* doc, const char* summary) {
    return {.name = name,
            .sends = AHRS_GET_ESTIMATES,
            .fields = {constant(group)},
            .reply = roundedFrom(estimatesPlace, inDegrees, doc),
            .doc = summary};
}

const Parameter mode{"mode", "int",
                     "0 orientation, 1 acceleration, 2 angular velocity, 3 orientation and acceleration, 4 "
                     "orientation and angular velocity, 5 angular velocity and acceleration, 6 all three"};
const Definition checkMode =
    accepting("_checkAHRSMode", mode, FailureId::AHRSModeNotAvaliableError, {0, 1, 2, 3, 4, 5, 6});

Task open(Op op, Object port) {
    op.call("_checkAHRSPort", port);
    const Object reply = co_await exchange(op, AHRS_OPEN, payload(port));
    Object status = py::int_(0);
    const Object opened = statusOf(op, AHRS_OPEN, reply);
    if (opened > status) status = opened;
    const Object set = co_await op.request("_AHRS_setSamplingPeriod", port, py::float_(0.003));
    co_return set > status ? set : status;
}

Task start(Op op, Object port) {
    op.call("_checkAHRSPort", port);
    co_await op.callSameForm("_sendPacketWithoutReply", py::int_(int{AHRS_START}), payload(port, 0));
    co_return py::int_(0);
}

Task getEstimate(Op op, Object port, Object mode) {
    op.call("_checkAHRSPort", port);
    op.call("_checkAHRSMode", mode);
    const Object mask = op.call("_convertModeToMask", mode);
    const Object reply = co_await exchange(op, AHRS_GET_ESTIMATES, payload(port, mask));
    const std::size_t inDegrees = isOneOf(mode, {0}) ? all : isOneOf(mode, {3, 4, 6}) ? 3 : 0;
    co_return rounded(restOf(bytesOf(reply), estimatesPlace), inDegrees);
}

}  // namespace

void defineAttitude(Package& package) {
    const Parameter period{"sampling_period", "float", "seconds between two steps of the filter, 32-bit float"};
    const Parameter gravity{"gravity", "float", "in m/s2"},
        step{"dt", "float", "seconds between two steps of the filter"},
        offset{"z_offset", "float", "in the device's unit"},
        accelerator{"accelerator_decay_time", "float", "in seconds"},
        magnetometer{"magnetometer_decay_time", "float", "in seconds"};
    const auto numbers = [](std::initializer_list<Parameter> parameters) {
        std::vector<Check> checks;  // not of the port, which the device checks
        for (const Parameter& parameter : parameters) checks.push_back(isNumber(parameter));
        return checks;
    };
    Feature ahrs(package, "AHRS", "The inertial unit.");
    ahrs.shared(checkPort)
        .constructorFields({{"ahrs_dict", "dict[int, list[int]]", "ports of the inertial unit"}})
        .shared(checkMode)
        .shared({.name = "_convertModeToMask",
                 .parameters = {mode},
                 .doc = "Mode as the device's mask.",
                 .returns = {"int", "sum of 1 orientation, 4 angular velocity, 16 acceleration"},
                 .raises = {checkMode},
                 .body =
                     [](py::handle, const Object& mode) {
                         acceptMode(mode);
                         std::size_t number = 0;
                         while (number + 1 < maskOfMode.size() && !mode.equal(py::int_(number))) ++number;
                         return maskOfMode[number];
                     }})
        .operation(
            {.name = "AHRS_open",
             .parameters = {port},
             .doc = "Opens the unit and sets its filter's step to 3 ms.",
             .returns =
                 {"int",
                  "0: the statuses of both steps merged, in which a refusal does not show (compatibility note 28)",
                  "the device"},
             .raises = {checkPort},
             .body = open})
        .operation({.name = "AHRS_start",
                    .parameters = {port},
                    .doc = "Starts the filter; there is no reply.",
                    .returns = {"int", "0"},
                    .raises = {checkPort},
                    .body = start})
        .operation(
            {.name = "AHRS_getEstimate",
             .parameters = {port, mode},
             .doc = "Reads simultaneous estimates.",
             .returns =
                 {"list[float]",
                  "three values of each quantity: angles in degrees first, then angular velocity, then acceleration, "
                  "in the device's units; rounded to 4 decimals",
                  "the device"},
             .raises = {checkPort, checkMode},
             .body = getEstimate});
    const Request setGeneral{.name = "_AHRS_setGeneral",
                             .checks = numbers({gravity, step, offset}),
                             .sends = AHRS_SET_GNRL,
                             .fields = {port | u8, gravity | f32, step | f32, offset | f32},
                             .doc = "Sets up the unit."};
    ahrs.sharing({.checks = {checkPort(port)}, .fields = {port | u8}})
        .operations({
            {.name = "AHRS_stop", .sends = AHRS_STOP, .doc = "Stops the filter."},
            {.name = "AHRS_close", .sends = AHRS_CLOSE, .doc = "Closes the unit."},
            {.name = "AHRS_reset", .sends = AHRS_RESET, .doc = "Restarts the filter."},
            estimates("AHRS_getOrientation", orientation, all, "three angles in degrees", "Reads the orientation."),
            estimates("AHRS_getOrientation_rad", orientation, 0, "three angles in radians", "Reads the orientation."),
            estimates("AHRS_getAcceleration_rad", acceleration, 0, "three values in the device's unit",
                      "Reads the acceleration."),
            estimates("AHRS_getAngularVelocity_rad", angularVelocity, 0, "three values in the device's unit",
                      "Reads the angular velocity."),
        });
    // These do not check the port; the device does.
    ahrs.operations({
        {.name = "_AHRS_getRawdata",
         .sends = AHRS_GET_RAW_DATA,
         .fields = {port | u8, constant(1)},
         .reply = roundedFrom(rawPlace, 0, "what the sensors measure, in the device's units"),
         .doc = "Reads the sensors."},
        setGeneral,
    });
    ahrs.operation({.name = "_AHRS_setSamplingPeriod",
                    .parameters = {port, period},
                    .doc = "Sets the step of the filter, with a gravity of 9.81 and an offset of 0.001.",
                    .returns = status(1).returns,
                    .raises = Definition(setGeneral).raises,
                    .body = [](Op op, Object port, Object period) -> Task {
                        const py::float_ gravity(9.81), offset(0.001);
                        co_return co_await op.request("_AHRS_setGeneral", port, gravity, period, offset);
                    }});
    Definition tau = Request{
        .name = "_AHRS_VQF_setTau",
        .checks = numbers({accelerator, magnetometer}),
        .sends = AHRS_VQF_SET_TAU,
        .fields = {port | u8, accelerator | f32, magnetometer | f32},
        .doc = "Sets how long the filter takes to follow a sensor; both forms have this name (compatibility note 18)."};
    // Compat 18: both forms have this name. A product has the blocking one.
    tau.asyncName = tau.name;
    ahrs.operation(tau);
}

}  // namespace zvr::python
