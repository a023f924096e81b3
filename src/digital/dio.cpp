// General-purpose digital lines: ports and sets of pins are opened as inputs or outputs, read, written, toggled and
// closed. Their state is kept only in the device.
#include "core/wire/failures.h"
#include "digital/digital.h"
#include "models/traits.h"

namespace zvr::python {

namespace {

constexpr int wholePort = 65535;
constexpr int allOn = 65535;

const Parameter anyPort{"port", "int", "port number; checked by the device"};
const Parameter inputPort{"port", "int", "port number, a key of the model's input map"};
const Parameter outputPort{"port", "int", "port number, a key of the model's output map"};
const Parameter inputPins{"pin", "list[int]", "pin numbers of the port"};
const Parameter outputPins{"pin", "list[int] | int", "pin numbers, or a mask of 16 bits with bit i for pin i"};
const Parameter pins{"pin_list", "list[int]", "pin numbers"};
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

// The differences between operations on inputs and on outputs.
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
    checkIsInt(port, "port");
    if (const Object here = attribute(self, side.map); !here.contains(port)) throw notAmong(side.portFailure, here);
}

void checkPortAndPins(py::handle self, const Side& side, const Object& port, const Object& pins) {
    checkIsInt(port, "port");
    checkIsIntOrList(pins, "pin");
    if (const Object here = attribute(self, side.map); !here.contains(port)) throw notAmong(side.portFailure, here);
    const Object wanted = own(PySet_New(pins.ptr()));
    if (!truthOf(callMethod(wanted, "issubset", pinsOfPort(self, side, port)))) {
        throw notAmong(FailureId::PinsNotExistError, pinsOfPort(self, side, port));
    }
}

Raises portRaises(const char* failure) {
    return {"InputTypeNotCorrectError: an argument has the wrong type",
            std::string(failure) + ": the model has no such port"};
}

Raises pinRaises(const char* failure) {
    Raises raises = portRaises(failure);
    raises.add(
        {"PinsNotExistError: the port has no such pin", "TypeError: the pins are not a list (compatibility note 35)"});
    return raises;
}

const Definition checkDIPort{.name = "_checkDIPort",
                             .parameters = {inputPort},
                             .doc = "Raises DIPortNotAvaliableError unless the port has inputs.",
                             .raises = portRaises("DIPortNotAvaliableError"),
                             .body = [](py::handle self, const Object& port) { checkPort(self, input, port); }};
const Definition checkDOPort{.name = "_checkDOPort",
                             .parameters = {outputPort},
                             .doc = "Raises DOPortNotAvaliableError unless the port has outputs.",
                             .raises = portRaises("DOPortNotAvaliableError"),
                             .body = [](py::handle self, const Object& port) { checkPort(self, output, port); }};
const Definition checkDIPortAndPin{
    .name = "_checkDIPortAndPin",
    .parameters = {inputPort, pins},
    .doc = "Raises PinsNotExistError unless all pins can be inputs.",
    .raises = pinRaises("DIPortNotAvaliableError"),
    .body = [](py::handle self, const Object& port, const Object& pins) { checkPortAndPins(self, input, port, pins); }};
const Definition checkDOPortAndPin{.name = "_checkDOPortAndPin",
                                   .parameters = {outputPort, pins},
                                   .doc = "Raises PinsNotExistError unless all pins can be outputs.",
                                   .raises = pinRaises("DOPortNotAvaliableError"),
                                   .body = [](py::handle self, const Object& port, const Object& pins) {
                                       checkPortAndPins(self, output, port, pins);
                                   }};

// Opens pins that no other function uses. `pins` is iterated only after the port's modes are read, and `mask` is called
// after that.
template <class Mask>
Task openLines(Op op, const Side& side, Object port, Object pins, Mask mask) {
    const Object modes = co_await op.request("Sys_getPinModeInPort", port);
    for (const py::handle pin : pins) {
        const Object mode = own(PyObject_GetItem(modes.ptr(), pin.ptr()));
        if (!mode.equal(py::str("Idle")) && !mode.equal(py::str(side.mode))) throw Failure(side.portFailure);
    }
    const Object addressed = mask();
    co_return co_await op.request("_setDIOCurrent", port, addressed, py::int_(allOn), py::int_(side.direction),
                                  py::int_(0));
}

std::vector<Request> wireRows() {
    const auto fillers = [](std::vector<Field> fields) {
        fields.insert(fields.end(), 6, constant(1));
        return fields;
    };
    const std::vector<Field> masked = {anyPort | u8, mask | u16};
    const std::vector<Field> maskedState = {anyPort | u8, mask | u16, state | u16};
    const std::vector<Field> portOnly = {anyPort | u8, constant(0)};
    return {
        {.name = "DIO_loadStartup",
         .sends = LOAD_DIO_STARTUP,
         .fields = fillers({anyPort | u8}),
         .reply = configurationReply(),
         .doc = "Reads the port's power-up configuration."},
        {.name = "_DIO_saveStartup",
         .sends = SAVE_DIO_STARTUP,
         .fields = {anyPort | u8, enabled | u16, direction | u16, state | u16},
         .doc = "Saves the port's power-up configuration."},
        {.name = "_getDIOCurrent",
         .sends = GET_DIO_CURRENT,
         .fields = fillers(masked),
         .reply = configurationReply(),
         .doc = "Reads the current configuration."},
        {.name = "_setDIOCurrent",
         .sends = SET_DIO_CURRENT,
         .fields = {anyPort | u8, mask | u16, enabled | u16, direction | u16, state | u16},
         .doc = "Configures lines."},
        {.name = "_toggleDIODirection",
         .sends = TOGGLE_DIO_DIR,
         .fields = maskedState,
         .doc = "Turns inputs into outputs and outputs into inputs."},
        {.name = "_getDIOState",
         .sends = GET_DIO_STATE,
         .fields = masked,
         .reply = levelsReply("the stored state"),
         .doc = "Reads the stored state of lines."},
        {.name = "_setDIOState",
         .sends = SET_DIO_STATE,
         .fields = maskedState,
         .doc = "Stores a state of lines without driving them."},
        {.name = "_readDI",
         .sends = READ_DI,
         .fields = portOnly,
         .doc = "Makes the device read the port into its stored state."},
        {.name = "_writeDO",
         .sends = WRITE_DO,
         .fields = portOnly,
         .doc = "Makes the device drive the port from its stored state."},
        {.name = "_readAndGetDI",
         .sends = READ_AND_GET_DI,
         .fields = masked,
         .reply = levelsReply("the levels read"),
         .doc = "Reads lines."},
        {.name = "_setAndWriteDO",
         .sends = SET_AND_WRITE_DO,
         .fields = maskedState,
         .reply = levelsReply("the port's new state"),
         .doc = "Drives lines."},
        {.name = "_DIO_setPortDI",
         .checks = {checkDIPort(inputPort)},
         .sends = SET_SLOT_DI,
         .fields = {inputPort | u8, constant(0)},
         .doc = "Makes a whole port digital inputs."},
        {.name = "_DIO_setPortDO",
         .checks = {checkDOPort(outputPort)},
         .sends = SET_SLOT_DO,
         .fields = {outputPort | u8, constant(0)},
         .doc = "Makes a whole port digital outputs."},  // Closing uses the map of outputs too.
        {.name = "_DIO_setPortIdle",
         .checks = {checkDOPort(outputPort)},
         .sends = SET_SLOT_IDLE,
         .fields = {outputPort | u8, constant(0)},
         .doc = "Releases a whole port."},
        {.name = "_toggleAndWriteDO",
         .sends = TOGGLE_AND_WRITE_DO,
         .fields = masked,
         .reply = levelsReply("the port's new state"),
         .doc = "Toggles lines."},
    };
}

void defineChecks(Feature& dio) {
    dio.shared({.name = "DI_getPinMap",
                .doc = "Returns which pins can be inputs.",
                .returns = {"dict[int, list[int]]", "pin numbers by port", "the model's table"},
                .body = [](py::handle self) { return attribute(self, "di_dict"); }})
        .shared({.name = "DO_getPinMap",
                 .doc = "Returns which pins can be outputs.",
                 .returns = {"dict[int, list[int]]", "pin numbers by port", "the model's table"},
                 .body = [](py::handle self) { return attribute(self, "do_dict"); }})
        .shared({.name = "_getPinIndexInInt",
                 .parameters = {outputPins},
                 .doc = "Converts pins to a mask.",
                 .returns = {"int", "mask, bit i for pin i"},
                 .body = [](py::handle,
                            const Object& pins) { return PyLong_CheckExact(pins.ptr()) ? pins : maskOfIndices(pins); }})
        .shared({.name = "_getPinIndexInList",
                 .parameters = {outputPins},
                 .doc = "Converts pins to a list.",
                 .returns = {"list[int]", "pin numbers"},
                 .body = [](py::handle, const Object& pins) -> Object {
                     if (PyList_CheckExact(pins.ptr())) return pins;
                     return indicesOfMask(pins);
                 }})
        .shared(checkDIPort)
        .shared(checkDOPort)
        .shared(checkDIPortAndPin)
        .shared(checkDOPortAndPin);
}

void defineClosing(Feature& dio) {
    const Raises nothing;
    dio.operation({.name = "_closeDIOInPins",
                   .parameters = {anyPort, {"pin", "int", "mask of 16 bits, bit i for pin i"}},
                   .doc = "Releases pins.",
                   .returns = status(1).returns,
                   .raises = nothing,
                   .body = [](Op op, Object port, Object mask) -> Task {
                       const py::int_ off(0);
                       co_return co_await op.request("_setDIOCurrent", port, mask, off, off, off);
                   }})
        .operation({.name = "_closeDIOInPort",
                    .parameters = {anyPort},
                    .doc = "Releases a whole port.",
                    .returns = status(1).returns,
                    .raises = nothing,
                    .body = [](Op op, Object port) -> Task {
                        const py::int_ off(0);
                        co_return co_await op.request("_setDIOCurrent", port, py::int_(wholePort), off, off, off);
                    }});
}

// The operations of one direction on a whole port. They do nothing on a model of fixed function.
void definePortOpening(Feature& dio, const Side& side, const Definition& check, const Parameter& port,
                       const std::string& what) {
    const std::string prefix = side.mode;
    dio.operation({.name = prefix + "_openPort",
                   .parameters = {port},
                   .doc = "Opens a whole port as " + what + ".",
                   .returns = status(1).returns,
                   .raises = {check},
                   .body = [side](Op op, Object port) -> Task {
                       if (isFixedFunction(op.self())) co_return py::int_(0);
                       op.call(side.checkPort, port);
                       const Object pins = pinsOfPort(op.self(), side, port);
                       co_return co_await op.run(openLines(op, side, port, pins, [] { return py::int_(wholePort); }));
                   }})
        .operation({.name = prefix + "_closePort",
                    .parameters = {port},
                    .doc = "Releases a whole port.",
                    .returns = status(1).returns,
                    .raises = {check},
                    .body = [side](Op op, Object port) -> Task {
                        if (isFixedFunction(op.self())) co_return py::int_(0);
                        op.call(side.checkPort, port);
                        co_return co_await op.request("_closeDIOInPort", port);
                    }});
}

void defineInputs(Feature& dio) {
    const Raises raises{checkDIPortAndPin};
    definePortOpening(dio, input, checkDIPort, inputPort, "digital inputs");
    dio.operation({.name = "DI_openPins",
                   .parameters = {inputPort, inputPins},
                   .doc = "Opens pins as digital inputs.",
                   .returns = status(1).returns,
                   .raises = raises,
                   .body = [](Op op, Object port, Object pins) -> Task {
                       if (isFixedFunction(op.self())) co_return py::int_(0);
                       op.call("_checkDIPortAndPin", port, pins);
                       const Object list = op.call("_getPinIndexInList", pins);
                       const auto mask = [op, pins] { return op.call("_getPinIndexInInt", pins); };
                       co_return co_await op.run(openLines(op, input, port, list, mask));
                   }})
        .operation({.name = "DI_closePins",
                    .parameters = {inputPort, inputPins},
                    .doc = "Releases pins.",
                    .returns = status(1).returns,
                    .raises = raises,
                    .body = [](Op op, Object port, Object pins) -> Task {
                        if (isFixedFunction(op.self())) co_return py::int_(0);
                        op.call("_checkDIPortAndPin", port, pins);
                        co_return co_await op.request("_closeDIOInPins", port, op.call("_getPinIndexInInt", pins));
                    }})
        .operation({.name = "DI_readPort",
                    .parameters = {inputPort},
                    .doc = "Reads a whole port.",
                    .returns = {"list[int]", levels, "the device"},
                    .raises = {checkDIPort},
                    .body = [](Op op, Object port) -> Task {
                        op.call("_checkDIPort", port);
                        co_return co_await op.request("_readAndGetDI", port, py::int_(wholePort));
                    }})
        .operation({.name = "DI_readPins",
                    .parameters = {inputPort, inputPins},
                    .doc = "Reads pins.",
                    .returns = {"list[int]", "0 or 1 per pin, in the order given", "the device"},
                    .raises = raises,
                    .body = [](Op op, Object port, Object pins) -> Task {
                        op.call("_checkDIPortAndPin", port, pins);
                        const Object list = op.call("_getPinIndexInList", pins);
                        const Object mask = op.call("_getPinIndexInInt", pins);
                        const Object states = co_await op.request("_readAndGetDI", port, mask);
                        py::list result;
                        for (const py::handle pin : list) {
                            result.append(own(PyObject_GetItem(states.ptr(), pin.ptr())));
                        }
                        co_return result;
                    }});
}

void defineOutputs(Feature& dio) {
    const Raises raises{checkDOPortAndPin};
    const Returns written{"int", "0", "the library"};
    const Returns newState{"list[int]", "the port's new state, " + levels, "the device"};
    Raises valueRaises = raises;
    valueRaises.insert(valueRaises.end(), {"InputTypeNotConsistentError: one of `pin` and `value` is a list, not both",
                                           "PinsValueNotDefineError: `pin` and `value` differ in length",
                                           "OverflowError: a number has more than 16 bits"});
    definePortOpening(dio, output, checkDOPort, outputPort, "digital outputs at low level");
    dio.operation({.name = "DO_openPins",
                   .parameters = {outputPort, outputPins},
                   .doc = "Opens pins as digital outputs at low level.",
                   .returns = status(1).returns,
                   .raises = raises,
                   .body = [](Op op, Object port, Object pins) -> Task {
                       if (isFixedFunction(op.self())) co_return py::int_(0);
                       const Object list = op.call("_getPinIndexInList", pins);
                       op.call("_checkDOPortAndPin", port, list);
                       const auto mask = [op, pins] { return op.call("_getPinIndexInInt", pins); };
                       co_return co_await op.run(openLines(op, output, port, list, mask));
                   }})
        .operation({.name = "DO_closePins",
                    .parameters = {outputPort, outputPins},
                    .doc = "Releases pins.",
                    .returns = status(1).returns,
                    .raises = raises,
                    .body = [](Op op, Object port, Object pins) -> Task {
                        if (isFixedFunction(op.self())) co_return py::int_(0);
                        op.call("_checkDOPortAndPin", port, op.call("_getPinIndexInList", pins));
                        co_return co_await op.request("_closeDIOInPins", port, op.call("_getPinIndexInInt", pins));
                    }})
        .operation({.name = "DO_writePort",
                    .parameters = {outputPort,
                                   {"value", "list[int] | int", "0 or 1 per pin from pin 0 on, or a word of 16 bits"}},
                    .doc = "Drives a whole port; pins past the end of a list go low.",
                    .returns = written,
                    .raises = {checkDOPort, "OverflowError: a number has more than 16 bits"},
                    .body = [](Op op, Object port, Object value) -> Task {
                        op.call("_checkDOPort", port);
                        checkIsIntOrList(value, "value");
                        Object state = value;
                        if (PyList_Check(value.ptr()) != 0) {
                            const Object pins = callObject(pythonObject("builtins", "range"), py::int_(py::len(value)));
                            state = maskOfPairs(pins, value);
                        }
                        co_await op.request("_setAndWriteDO", port, py::int_(wholePort), state);
                        co_return py::int_(0);
                    }})
        .operation(
            {.name = "DO_writePins",
             .parameters = {outputPort,
                            outputPins,
                            {"value", "list[int] | int", "0 or 1 per pin of the list, or a state word for a mask"}},
             .doc = "Drives pins.",
             .returns = written,
             .raises = valueRaises,
             .body = [](Op op, Object port, Object pins, Object value) -> Task {
                 op.call("_checkDOPortAndPin", port, op.call("_getPinIndexInList", pins));
                 checkIsIntOrList(value, "value");
                 checkSameType(pins, value);
                 Object state = value;
                 if (PyList_Check(pins.ptr()) != 0) {
                     if (py::len(pins) != py::len(value)) throw Failure(FailureId::PinsValueNotDefineError);
                     state = maskOfPairs(pins, value);
                 }
                 co_await op.request("_setAndWriteDO", port, op.call("_getPinIndexInInt", pins), state);
                 co_return py::int_(0);
             }})
        .operation({.name = "DO_togglePort",
                    .parameters = {outputPort},
                    .doc = "Toggles a whole port.",
                    .returns = newState,
                    .raises = {checkDOPort},
                    .body = [](Op op, Object port) -> Task {
                        op.call("_checkDOPort", port);
                        co_return co_await op.request("_toggleAndWriteDO", port, py::int_(wholePort));
                    }})
        .operation({.name = "DO_togglePins",
                    .parameters = {outputPort, outputPins},
                    .doc = "Toggles pins. The device checks the pins.",
                    .returns = newState,
                    .raises = {checkDOPort, "OverflowError: a mask has more than 16 bits"},
                    .body = [](Op op, Object port, Object pins) -> Task {
                        op.call("_checkDOPort", port);
                        co_return co_await op.request("_toggleAndWriteDO", port, op.call("_getPinIndexInInt", pins));
                    }});
}

}  // namespace

void defineDio(Package& package) {
    Feature dio(package, "DIO", "General-purpose digital lines.");
    dio.constructorFields({{"di_dict", "dict[int, list[int]]", "pins that can be inputs, by port"},
                           {"do_dict", "dict[int, list[int]]", "pins that can be outputs, by port"},
                           {"dio_num_pins_per_port", "int", "number of pins in the per-pin lists"}});
    defineChecks(dio);
    dio.operations(wireRows());
    defineClosing(dio);
    defineInputs(dio);
    defineOutputs(dio);
}

}  // namespace zvr::python
