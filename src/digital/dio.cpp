// General-purpose digital lines: ports and sets of pins are opened as inputs or outputs, read, written, toggled and
// closed. The device is the only holder of their state.
#include "core/wire/failures.h"
#include "digital/digital.h"
#include "models/traits.h"

namespace zvr::python {

namespace {

constexpr int wholePort = 65535;
constexpr int allOn = 65535;

const Parameter anyPort{"port", "int", "port number; the device judges it"};
const Parameter inputPort{"port", "int", "port number, a key of the model's input map"};
const Parameter outputPort{"port", "int", "port number, a key of the model's output map"};
const Parameter inputPins{"pin", "list[int]", "pin numbers of the port"};
const Parameter outputPins{"pin", "list[int] | int", "pin numbers, or a mask of 16 bits with bit i for pin i"};
const Parameter mask{"mask", "int", "pins that the command addresses: 16 bits, bit i for pin i; 65535 is the port"};
const Parameter enabled{"enabled", "int", "16 bits: 1 a pin in use as digital line, 0 a released one"};
const Parameter direction{"direction", "int", "16 bits: 1 an output, 0 an input"};
const Parameter state{"state", "int", "16 bits: 1 high, 0 low"};

const std::string levels = "0 or 1 per pin, `dio_num_pins_per_port` items";

bool isFixedFunction(py::handle self) { return traitsOf(self).digital.fixedFunction; }

// A word of the reply as a list with one entry per pin.
Object pinLevels(py::handle self, const Bytes& reply, std::size_t place) {
    const int word = readBigEndian<std::uint16_t>(slice(reply, place, 2));
    return bitsOf(py::int_(word), attribute(self, "dio_num_pins_per_port"));
}

Reply levelsReply(const std::string& doc) {
    return {[](py::handle self, const Bytes& data) { return pinLevels(self, data, 1); },
            {"list[int]", doc + ", " + levels, "the device"}};
}

Reply configurationReply() {
    return {[](py::handle self, const Bytes& data) -> Object {
                return py::make_tuple(pinLevels(self, data, 1), pinLevels(self, data, 3), pinLevels(self, data, 5));
            },
            {"tuple[list[int], list[int], list[int]]", "enabled, direction and state, each " + levels, "the device"}};
}

// What the operations on inputs and on outputs differ in.
struct Side {
    const char* map;
    const char* checkPort;
    const char* mode;
    FailureId portFailure;
    int direction;
};
constexpr Side input{"di_dict", "_checkDIPort", "DI", FailureId::DIPortNotAvaliableError, 0};
constexpr Side output{"do_dict", "_checkDOPort", "DO", FailureId::DOPortNotAvaliableError, allOn};

Object pinsOfPort(py::handle self, const Side& side, const Object& port) {
    return own(PyObject_GetItem(attribute(self, side.map).ptr(), port.ptr()));
}

void checkPort(py::handle self, const Side& side, const Object& port) {
    checkIsInt(port);
    if (!attribute(self, side.map).contains(port)) throw Failure(side.portFailure);
}

void checkPortAndPins(py::handle self, const Side& side, const Object& port, const Object& pins) {
    checkIsInt(port);
    checkIsIntOrList(pins);
    if (!attribute(self, side.map).contains(port)) throw Failure(side.portFailure);
    const Object wanted = own(PySet_New(pins.ptr()));
    if (!truthOf(callMethod(wanted, "issubset", pinsOfPort(self, side, port)))) {
        throw Failure(FailureId::PinsNotExistError);
    }
}

// Opens pins that no other function uses. `pins` is iterated only after the port's modes are read, and `mask` is asked
// for after that.
template <class Mask>
Result openLines(Op op, const Side& side, Object port, Object pins, Mask mask) {
    const Object modes = co_await op.request("Sys_getPinModeInPort", port);
    for (const py::handle pin : pins) {
        const Object mode = own(PyObject_GetItem(modes.ptr(), pin.ptr()));
        if (!mode.equal(py::str("Idle")) && !mode.equal(py::str(side.mode))) throw Failure(side.portFailure);
    }
    const Object addressed = mask();
    co_return co_await op.request("_setDIOCurrent", port, addressed, py::int_(allOn), py::int_(side.direction),
                                  py::int_(0));
}

std::vector<Row> wireRows() {
    const std::vector<Check> none;
    const std::vector<Field> three = {u8("port"), word("enabled"), word("direction"), word("state")};
    const auto fillers = [](std::vector<Field> fields) {
        fields.insert(fields.end(), 6, constant(1));
        return fields;
    };
    const std::vector<Field> masked = {u8("port"), word("mask")};
    const std::vector<Field> maskedState = {u8("port"), word("mask"), word("state")};
    const std::vector<Field> portOnly = {u8("port"), constant(0)};
    const auto portCheck = [](const char* check) { return std::vector<Check>{calls(check, {"port"})}; };
    return {
        {"DIO_loadStartup",
         {anyPort},
         none,
         LOAD_DIO_STARTUP,
         fillers({u8("port")}),
         configurationReply(),
         "Reads the configuration that the port takes at power-up."},
        {"_DIO_saveStartup",
         {anyPort, enabled, direction, state},
         none,
         SAVE_DIO_STARTUP,
         three,
         status(1),
         "Saves the configuration that the port takes at power-up."},
        {"_getDIOCurrent",
         {anyPort, mask},
         none,
         GET_DIO_CURRENT,
         fillers(masked),
         configurationReply(),
         "Reads the present configuration."},
        {"_setDIOCurrent",
         {anyPort, mask, enabled, direction, state},
         none,
         SET_DIO_CURRENT,
         {u8("port"), word("mask"), word("enabled"), word("direction"), word("state")},
         status(1),
         "Configures lines."},
        {"_toggleDIODirection",
         {anyPort, mask, state},
         none,
         TOGGLE_DIO_DIR,
         maskedState,
         status(1),
         "Turns inputs into outputs and outputs into inputs."},
        {"_getDIOState",
         {anyPort, mask},
         none,
         GET_DIO_STATE,
         masked,
         levelsReply("the stored state"),
         "Reads the stored state of lines."},
        {"_setDIOState",
         {anyPort, mask, state},
         none,
         SET_DIO_STATE,
         maskedState,
         status(1),
         "Stores a state of lines without driving them."},
        {"_readDI", {anyPort}, none, READ_DI, portOnly, status(1), "Lets the device read the port into its state."},
        {"_writeDO", {anyPort}, none, WRITE_DO, portOnly, status(1), "Lets the device drive the port from its state."},
        {"_readAndGetDI",
         {anyPort, mask},
         none,
         READ_AND_GET_DI,
         masked,
         levelsReply("the levels read"),
         "Reads lines."},
        {"_setAndWriteDO",
         {anyPort, mask, state},
         none,
         SET_AND_WRITE_DO,
         maskedState,
         levelsReply("the port's new state"),
         "Drives lines."},
        {"_DIO_setPortDI",
         {inputPort},
         portCheck("_checkDIPort"),
         SET_SLOT_DI,
         portOnly,
         status(1),
         "Makes a whole port digital inputs."},
        {"_DIO_setPortDO",
         {outputPort},
         portCheck("_checkDOPort"),
         SET_SLOT_DO,
         portOnly,
         status(1),
         "Makes a whole port digital outputs."},
        // Idling goes by the map of outputs too.
        {"_DIO_setPortIdle",
         {outputPort},
         portCheck("_checkDOPort"),
         SET_SLOT_IDLE,
         portOnly,
         status(1),
         "Releases a whole port."},
        {"_toggleAndWriteDO",
         {anyPort, mask},
         none,
         TOGGLE_AND_WRITE_DO,
         masked,
         levelsReply("the port's new state"),
         "Drives lines to the other level."},
    };
}

void defineChecks(Feature& dio) {
    const Parameter pins{"pin_list", "list[int]", "pin numbers"};
    const auto portRaises = [](const char* failure) {
        return Raises{"InputTypeNotCorrectError: an argument has the wrong type",
                      std::string(failure) + ": the model has no such port"};
    };
    const auto pinRaises = [&](const char* failure) {
        Raises raises = portRaises(failure);
        raises.push_back("PinsNotExistError: the port has no such pin");
        raises.push_back("TypeError: the pins are no list");
        return raises;
    };
    dio.shared("DI_getPinMap", {}, "Tells which pins can be inputs.",
               {"dict[int, list[int]]", "pin numbers by port", "the model's table"}, {},
               [](py::handle self) { return attribute(self, "di_dict"); })
        .shared("DO_getPinMap", {}, "Tells which pins can be outputs.",
                {"dict[int, list[int]]", "pin numbers by port", "the model's table"}, {},
                [](py::handle self) { return attribute(self, "do_dict"); })
        .shared(
            "_getPinIndexInInt", {outputPins}, "Pins as a mask.", {"int", "mask, bit i for pin i"}, {},
            [](py::handle, const Object& pins) { return PyLong_CheckExact(pins.ptr()) ? pins : maskOfIndices(pins); })
        .shared("_getPinIndexInList", {outputPins}, "Pins as a list.", {"list[int]", "pin numbers"}, {},
                [](py::handle, const Object& pins) -> Object {
                    if (PyList_CheckExact(pins.ptr())) return pins;
                    return indicesOfMask(pins);
                })
        .shared("_checkDIPort", {inputPort}, "Refuses a port without inputs.", {},
                portRaises("DIPortNotAvaliableError"),
                [](py::handle self, const Object& port) { checkPort(self, input, port); })
        .shared("_checkDOPort", {outputPort}, "Refuses a port without outputs.", {},
                portRaises("DOPortNotAvaliableError"),
                [](py::handle self, const Object& port) { checkPort(self, output, port); })
        .shared(
            "_checkDIPortAndPin", {inputPort, pins}, "Refuses pins that cannot be inputs.", {},
            pinRaises("DIPortNotAvaliableError"),
            [](py::handle self, const Object& port, const Object& pins) { checkPortAndPins(self, input, port, pins); })
        .shared("_checkDOPortAndPin", {outputPort, pins}, "Refuses pins that cannot be outputs.", {},
                pinRaises("DOPortNotAvaliableError"), [](py::handle self, const Object& port, const Object& pins) {
                    checkPortAndPins(self, output, port, pins);
                });
}

void defineClosing(Feature& dio) {
    const Raises nothing;
    dio.operation("_closeDIOInPins", {anyPort, {"pin", "int", "mask of 16 bits, bit i for pin i"}}, "Releases pins.",
                  status(1).returns, nothing,
                  [](Op op, Object port, Object mask) -> Result {
                      const py::int_ off(0);
                      co_return co_await op.request("_setDIOCurrent", port, mask, off, off, off);
                  })
        .operation("_closeDIOInPort", {anyPort}, "Releases a whole port.", status(1).returns, nothing,
                   [](Op op, Object port) -> Result {
                       const py::int_ off(0);
                       co_return co_await op.request("_setDIOCurrent", port, py::int_(wholePort), off, off, off);
                   });
}

// The operations of one side that take a whole port. They do nothing on a model of fixed function.
template <const Side& side>
void definePortOpening(Feature& dio, const std::string& prefix, const Parameter& port, const std::string& what) {
    const std::string check = "@" + std::string(side.checkPort);
    dio.operation(prefix + "_openPort", {port}, "Opens a whole port as " + what + ".", status(1).returns, {check},
                  [](Op op, Object port) -> Result {
                      if (isFixedFunction(op.self())) co_return py::int_(0);
                      op.call(side.checkPort, port);
                      const Object pins = pinsOfPort(op.self(), side, port);
                      co_return co_await op.run(openLines(op, side, port, pins, [] { return py::int_(wholePort); }));
                  })
        .operation(prefix + "_closePort", {port}, "Releases a whole port.", status(1).returns, {check},
                   [](Op op, Object port) -> Result {
                       if (isFixedFunction(op.self())) co_return py::int_(0);
                       op.call(side.checkPort, port);
                       co_return co_await op.request("_closeDIOInPort", port);
                   });
}

void defineInputs(Feature& dio) {
    const Raises raises{"@_checkDIPortAndPin"};
    definePortOpening<input>(dio, "DI", inputPort, "digital inputs");
    dio.operation("DI_openPins", {inputPort, inputPins}, "Opens pins as digital inputs.", status(1).returns, raises,
                  [](Op op, Object port, Object pins) -> Result {
                      if (isFixedFunction(op.self())) co_return py::int_(0);
                      op.call("_checkDIPortAndPin", port, pins);
                      const Object list = op.call("_getPinIndexInList", pins);
                      const auto mask = [op, pins] { return op.call("_getPinIndexInInt", pins); };
                      co_return co_await op.run(openLines(op, input, port, list, mask));
                  })
        .operation("DI_closePins", {inputPort, inputPins}, "Releases pins.", status(1).returns, raises,
                   [](Op op, Object port, Object pins) -> Result {
                       if (isFixedFunction(op.self())) co_return py::int_(0);
                       op.call("_checkDIPortAndPin", port, pins);
                       co_return co_await op.request("_closeDIOInPins", port, op.call("_getPinIndexInInt", pins));
                   })
        .operation("DI_readPort", {inputPort}, "Reads a whole port.", {"list[int]", levels, "the device"},
                   {"@_checkDIPort"},
                   [](Op op, Object port) -> Result {
                       op.call("_checkDIPort", port);
                       co_return co_await op.request("_readAndGetDI", port, py::int_(wholePort));
                   })
        .operation("DI_readPins", {inputPort, inputPins}, "Reads pins.",
                   {"list[int]", "0 or 1 per pin, in the order given", "the device"}, raises,
                   [](Op op, Object port, Object pins) -> Result {
                       op.call("_checkDIPortAndPin", port, pins);
                       const Object list = op.call("_getPinIndexInList", pins);
                       const Object mask = op.call("_getPinIndexInInt", pins);
                       const Object states = co_await op.request("_readAndGetDI", port, mask);
                       py::list result;
                       for (const py::handle pin : list) {
                           result.append(own(PyObject_GetItem(states.ptr(), pin.ptr())));
                       }
                       co_return result;
                   });
}

void defineOutputs(Feature& dio) {
    const Raises raises{"@_checkDOPortAndPin"};
    const Returns written{"int", "0", "the library"};
    const Returns newState{"list[int]", "the port's new state, " + levels, "the device"};
    Raises valueRaises = raises;
    valueRaises.insert(valueRaises.end(), {"InputTypeNotConsistentError: one of `pin` and `value` is a list, not both",
                                           "PinsValueNotDefineError: `pin` and `value` differ in length",
                                           "OverflowError: a number has more than 16 bits"});
    definePortOpening<output>(dio, "DO", outputPort, "digital outputs at low level");
    dio.operation("DO_openPins", {outputPort, outputPins}, "Opens pins as digital outputs at low level.",
                  status(1).returns, raises,
                  [](Op op, Object port, Object pins) -> Result {
                      if (isFixedFunction(op.self())) co_return py::int_(0);
                      const Object list = op.call("_getPinIndexInList", pins);
                      op.call("_checkDOPortAndPin", port, list);
                      const auto mask = [op, pins] { return op.call("_getPinIndexInInt", pins); };
                      co_return co_await op.run(openLines(op, output, port, list, mask));
                  })
        .operation("DO_closePins", {outputPort, outputPins}, "Releases pins.", status(1).returns, raises,
                   [](Op op, Object port, Object pins) -> Result {
                       if (isFixedFunction(op.self())) co_return py::int_(0);
                       op.call("_checkDOPortAndPin", port, op.call("_getPinIndexInList", pins));
                       co_return co_await op.request("_closeDIOInPins", port, op.call("_getPinIndexInInt", pins));
                   })
        .operation("DO_writePort",
                   {outputPort, {"value", "list[int] | int", "0 or 1 per pin from pin 0 on, or a word of 16 bits"}},
                   "Drives a whole port; pins past the end of a list go low.", written,
                   {"@_checkDOPort", "OverflowError: a number has more than 16 bits"},
                   [](Op op, Object port, Object value) -> Result {
                       op.call("_checkDOPort", port);
                       checkIsIntOrList(value);
                       Object state = value;
                       if (PyList_Check(value.ptr()) != 0) {
                           const Object pins = callObject(hostObject("builtins", "range"), py::int_(py::len(value)));
                           state = maskOfPairs(pins, value);
                       }
                       co_await op.request("_setAndWriteDO", port, py::int_(wholePort), state);
                       co_return py::int_(0);
                   })
        .operation("DO_writePins",
                   {outputPort,
                    outputPins,
                    {"value", "list[int] | int", "0 or 1 per pin of the list, or a state word for a mask"}},
                   "Drives pins.", written, valueRaises,
                   [](Op op, Object port, Object pins, Object value) -> Result {
                       op.call("_checkDOPortAndPin", port, op.call("_getPinIndexInList", pins));
                       checkIsIntOrList(value);
                       checkSameType(pins, value);
                       Object state = value;
                       if (PyList_Check(pins.ptr()) != 0) {
                           if (py::len(pins) != py::len(value)) throw Failure(FailureId::PinsValueNotDefineError);
                           state = maskOfPairs(pins, value);
                       }
                       co_await op.request("_setAndWriteDO", port, op.call("_getPinIndexInInt", pins), state);
                       co_return py::int_(0);
                   })
        .operation("DO_togglePort", {outputPort}, "Drives a whole port to the other level.", newState,
                   {"@_checkDOPort"},
                   [](Op op, Object port) -> Result {
                       op.call("_checkDOPort", port);
                       co_return co_await op.request("_toggleAndWriteDO", port, py::int_(wholePort));
                   })
        .operation("DO_togglePins", {outputPort, outputPins},
                   "Drives pins to the other level. The device judges which pins there are.", newState,
                   {"@_checkDOPort", "OverflowError: a mask has more than 16 bits"},
                   [](Op op, Object port, Object pins) -> Result {
                       op.call("_checkDOPort", port);
                       co_return co_await op.request("_toggleAndWriteDO", port, op.call("_getPinIndexInInt", pins));
                   });
}

}  // namespace

void defineDio(Package& package) {
    Feature dio(package, "DIO", "General-purpose digital lines.");
    dio.offers({{"di_dict", "dict[int, list[int]]", "pins that can be inputs, by port"},
                {"do_dict", "dict[int, list[int]]", "pins that can be outputs, by port"},
                {"dio_num_pins_per_port", "int", "number of pins in the per-pin lists"}});
    defineChecks(dio);
    dio.rows(wireRows());
    defineClosing(dio);
    defineInputs(dio);
    defineOutputs(dio);
}

}  // namespace zvr::python
