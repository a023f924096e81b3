// The moves and searches that the firmware of the stepper drive runs by itself.
#include "motion/drive.h"
#include "motion/motion.h"

namespace zvr::python {

namespace {

constexpr Encoding lowByte{"low byte",
                           [](Payload& data, py::handle value, int) { data.add(borrow(value.ptr()) & py::int_(255)); }};
constexpr Encoding isTrueText{
    "is \"true\"", [](Payload& data, py::handle value, int) { data.add(value.equal(py::str("true")) ? 1 : 0); }};

}  // namespace

void defineDriveMoves(Feature& drive) {
    const Parameter& port = drivePort;
    const Parameter speed = integer("speed", "pulses per second, 0 to 4294967295"),
                    acceleration = integer("acceleration", "pulses per second squared, 0 to 4294967295"),
                    deceleration = integer("deceleration", "pulses per second squared, 0 to 4294967295"),
                    searching = integer("searching_speed", "pulses per second, 0 to 4294967295"),
                    approaching = integer("approaching_speed", "pulses per second near the reference, 0 to 4294967295"),
                    offset = integer("offset", "distance to go at the end, in pulses"),
                    reset{"reset_position", "str", "\"true\" sets the position to 0 at the end"};
    const auto numbered = [](const char* name) {
        return integer(name, "in the firmware's numbering; its low byte is sent");
    };
    const auto position = [](const char* name) { return integer(name, "pulses, -2147483648 to 2147483647"); };
    const Check portCheck = checkDrivePort(port);
    const std::vector<Field> searchFields{port | u8,
                                          searching | u32,
                                          approaching | u32,
                                          acceleration | u32,
                                          numbered("search_direction") | lowByte,
                                          numbered("approach_direction") | lowByte,
                                          offset | i32,
                                          reset | isTrueText};
    const Reply state{
        nullptr,
        {"tuple[int, bytes]", "state in the firmware's numbering, and the rest of the reply", "the device"},
        [](const Op&, const SentCommand&, const Object& reply) -> Object {
            return py::make_tuple(itemOf(reply, 1), restOfSequence(reply, 2));
        }};
    const Reply inputs{[](py::handle, const Bytes& data) -> Object {
                           const int word = readBigEndian<std::uint16_t>(slice(data, 1, 2));
                           py::list levels;
                           for (int bit = 0; bit < 3; ++bit) levels.append(word >> bit & 1);
                           return levels;
                       },
                       {"list[int]", "forward limit, reverse limit and home, 0 or 1", "the device"}};
    drive.operations(
        {{.name = "Motion_startVelocticyMove",
          .parameters = {port, speed, numbered("dir"), acceleration, deceleration},
          .checks = {portCheck, isInt(speed), isInt(acceleration), isInt(deceleration)},
          .sends = MOTION_START_V_MOVE,
          .fields = {port | u8, speed | u32, acceleration | u32, deceleration | u32, numbered("dir") | lowByte},
          .doc = "Starts a move at a speed."},
         {.name = "Motion_startPositionMove",
          .checks = {portCheck, isInt(speed), isInt(acceleration), isInt(deceleration)},
          .sends = MOTION_START_P_MOVE,
          .fields = {port | u8, position("position") | i32, speed | u32, acceleration | u32, deceleration | u32,
                     integer("mode", "in the firmware's numbering, 0 to 255") | u8},
          .doc = "Starts a move to a position."},
         {.name = "Motion_startScanMove",
          .checks = {portCheck, isInt(speed), isInt(acceleration)},
          .sends = MOTION_START_SCAN_MOVE,
          .fields = {port | u8, position("position_0") | i32, position("position_1") | i32, speed | u32,
                     acceleration | u32},
          .doc = "Starts a move to and fro between two positions."},
         {.name = "Motion_startFindLimit",
          .checks = {portCheck},
          .sends = MOTION_START_FIND_END,
          .fields = {port | u8, numbered("mode") | lowByte, searching | u32, approaching | u32, acceleration | u32,
                     offset | i32, reset | isTrueText},
          .doc = "Starts the search of a limit."},
         {.name = "Motion_startFindHome",
          .checks = {portCheck},
          .sends = MOTION_START_FIND_HOME,
          .fields = searchFields,
          .doc = "Starts the search of the home input."},
         {.name = "Motion_startFindZPolarity",
          .checks = {portCheck},
          .sends = MOTION_START_FIND_Z,
          .fields = searchFields,
          .doc = "Starts the search of the encoder's index."},
         {.name = "Motion_getProcessState",
          .checks = {portCheck},
          .sends = MOTION_GET_PROC_STATE,
          .fields = {port | u8},
          .reply = state,
          .doc = "Reads the state of the move or search."},
         {.name = "Motion_stopProcess",
          .checks = {portCheck},
          .sends = MOTION_STOP_PROC,
          .fields = {port | u8},
          .doc = "Stops the move or search."},
         {.name = "Motion_resetFactory",
          .checks = {portCheck},
          .sends = MOTION_RESET_FACTORY,
          .fields = {port | u8},
          .doc = "Sets the drive's parameters to the factory's."},
         {.name = "Motion_getLimitStatus",
          .parameters = {port},
          .checks = {portCheck},
          .sends = READ_AND_GET_DI,
          .fields = {constant(1), constant(0), constant(lines)},
          .reply = inputs,
          .doc = "Reads limits and home, from digital port 1."}});
}

}  // namespace zvr::python
