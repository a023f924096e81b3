// Analog outputs: static voltages, and the waveforms that the device generates.
#include "analog/analog.h"
#include "analog/input.h"
#include "core/wire/failures.h"
#include "digital/pin_map.h"
#include "models/traits.h"

namespace zvr::python {

namespace {

const Parameter port{"port", "int", "port of the analog output; on the chassis the slot, 1, 2 or 4"};
const Parameter channel{"channel", "int", "channel, counted from 0"};
const Parameter form{"form", "int", "form of the wave, 1, 2 or 3"}, mode{"mode", "int", "0, 1 or 2"},
    span{"span", "int", "0 to 4"}, rate{"sampling_rate", "float", "in Hz, at most `ao_rate`"};
constexpr PinnedPorts outputPorts{"AO", "ao_dict", "ao_port", FailureId::AOPortNotAvaliableError};

const Definition checkAOPort = portCheck(outputPorts), checkAOPinState = lineCheck(outputPorts),
                 checkAOChannel{.name = "_checkAOChannel",
                                .parameters = {{"channel", "int", "channel, counted from 0"}},
                                .doc = "Raises AOChannelNotAvaliableError unless the model has the channel.",
                                .raises = {"InputTypeNotCorrectError: `channel` is not an integer",
                                           "AOChannelNotAvaliableError: the model has no such channel"},
                                .body =
                                    [](py::handle self, const Object&channel) {
                                        checkIsInt(channel, "channel");
                                        if (isOneFrom(channel, 0, traitsOf(self).analogOutput.channels)) return;
                                        throw Failure(FailureId::AOChannelNotAvaliableError);
                                    }},
                 checkAOForm = accepting("_checkAOForm", {"form", "int", "1, 2 or 3"},
                                         FailureId::AOFormNotAvaliableError, {1, 2, 3}),
                 checkAOMode = accepting("_checkAOMode", mode, FailureId::AOModeNotVaildError, {0, 1, 2}),
                 checkAOSpan = accepting("_checkAOSpan", span, FailureId::AOSpanNotVaildError, {0, 1, 2, 3, 4});
const Definition checkRate{
    .name = "_ckeckAOSamplingRate",
    .parameters = {{"rate", "float", "rate in Hz"}},
    .doc = "Raises AORateNotVaildError if the rate is above the model's limit.",
    .raises = {"InputTypeNotCorrectError: it is not a number", "AORateNotVaildError: it is above the limit"},
    .body = [](py::handle self, const Object& rate) {
        checkIsNumber(rate, "rate");
        if (rate > attribute(self, "ao_rate")) throw Failure(FailureId::AORateNotVaildError);
    }};
const Raises portRaises{checkAOPort};

void checkVolts(py::handle self, py::handle values) {
    checkItems(values, attribute(self, "ao_volt_min"), attribute(self, "ao_volt_max"));
}

Task open(Op op, Object port) {
    const AnalogOutput& output = traitsOf(op.self()).analogOutput;
    if (output.opensByItself) co_return py::int_(0);
    op.call("_checkAOPort", port);
    if (output.sharesLines) {
        py::list idle;
        idle.append("Idle");
        co_await op.request("_checkAOPinState", port, idle);
    }
    const Object reply = co_await exchange(op, OPEN_AO, payload(port));
    co_return statusOf(op, OPEN_AO, reply);
}

Task close(Op op, Object port) {
    if (traitsOf(op.self()).analogOutput.opensByItself) co_return py::int_(0);
    op.call("_checkAOPort", port);
    const Object reply = co_await exchange(op, CLOSE_AO, payload(port));
    co_return statusOf(op, CLOSE_AO, reply);
}

Task writeOne(Op op, Object port, Object channel, Object value) {
    port = devicePort(op.self(), port);
    op.call("_checkAOPort", port);
    op.call("_checkAOChannel", channel);
    checkIsNumber(value, "value");
    py::list alone;
    alone.append(value);
    checkVolts(op.self(), alone);
    const Object reply = co_await exchange(op, WRITE_AO_BY_CHANNEL, payload(port, channel, pack<float>(value)));
    co_return statusOf(op, WRITE_AO_BY_CHANNEL, reply);
}

Task writeAll(Op op, Object port, Object values) {
    port = devicePort(op.self(), port);
    op.call("_checkAOPort", port);
    checkIsList(values, "value_list");
    checkVolts(op.self(), values);
    const Object adjust = attribute(py::module_::import("pyzvr"), "adjustDataList");
    Payload data;
    data.add(port);
    for (const py::handle value : callObject(adjust, values, attribute(op.self(), "ao_channel"))) {
        data.add(pack<float>(value, "value_list"));
    }
    const Object reply = co_await exchange(op, WRITE_AO_SYNCHRONIZED, data.list());
    co_return statusOf(op, WRITE_AO_SYNCHRONIZED, reply);
}

void defineChecks(Feature& output) {
    for (const Definition& check :
         {checkAOPort, portLines(outputPorts), checkAOChannel, checkAOForm, checkAOMode, checkAOSpan, checkRate}) {
        output.shared(check);
    }
    output.operation(checkAOPinState)
        .shared(
            {.name = "_checkAONumOfValues",
             .parameters = {{"value", "int", "number of values, at most 13"}},
             .doc = "Raises InputDataNotInRangeError unless one push takes that many values.",
             .raises = {"InputTypeNotCorrectError: it is not an integer", "InputDataNotInRangeError: another value"},
             .body = [](py::handle, const Object& value) {
                 checkIsInt(value, "value");
                 if (value > py::int_(13)) throw Failure(FailureId::InputDataNotInRangeError);
             }});
}

std::vector<FieldDoc> offered() {
    return {{"ao_dict", "dict[int, list[Any]]", "ports of the analog output, each with its channels or lines"},
            {"ao_volt_min", "float", "lowest voltage"},
            {"ao_volt_max", "float", "highest voltage"},
            {"ao_channel", "int", "number of channels"},
            {"ao_rate", "int", "highest rate in Hz"}};
}

// A second name of the same number.
void defineMaxRate(Feature& output) {
    output.property(
        {"ao_max_rate", "int", "Highest rate in Hz: `ao_rate`."},
        [](py::handle self) { return attribute(self, "ao_rate"); },
        [](py::handle self, const Object& rate) { setAttribute(self, "ao_rate", rate); },
        [](py::handle self) { callMethod(self, "__delattr__", interned("ao_rate")); });
}

}  // namespace

void defineAnalogOutput(Package& package) {
    const Returns result = status(1).returns;
    const Parameter volts{"value", "float", "voltage, between `ao_volt_min` and `ao_volt_max`; 32-bit float"};
    Feature output(package, "AO", "Analog outputs.");
    defineChecks(output);
    defineMaxRate(output);
    output.constructorFields(offered())
        .shared({.name = "AO_getPort",
                 .doc = "Returns which ports there are.",
                 .returns = {"list[int]", "port numbers", "the model's table"},
                 .body = [](py::handle self) { return py::list(attribute(self, "ao_dict")); }})
        .operation({.name = "AO_open",
                    .parameters = {port},
                    .doc = "Opens a port, whose lines must be idle.",
                    .returns = result,
                    .raises = {checkAOPort, checkAOPinState},
                    .body = open})
        .operation({.name = "AO_close",
                    .parameters = {port},
                    .doc = "Closes a port.",
                    .returns = result,
                    .raises = portRaises,
                    .body = close})
        .operation({.name = "AO_writeOneChannel",
                    .parameters = {port, channel, volts},
                    .doc = "Sets the voltage of a channel.",
                    .returns = result,
                    .raises = {checkAOPort, checkAOChannel, "InputDataNotInRangeError: the voltage is out of range"},
                    .body = writeOne})
        .operation(
            {.name = "AO_writeAllChannels",
             .parameters = {port,
                            {"value_list", "list[float]", "voltages; a shorter list is filled, a longer one cut"}},
             .doc = "Sets the voltages of all channels at once.",
             .returns = result,
             .raises = {checkAOPort, "InputTypeNotCorrectError: it is not a list",
                        "InputDataNotInRangeError: a voltage is out of range"},
             .body = writeAll});
}

namespace {

Reply modeAndRate() {
    return {[](py::handle, const Bytes& data) -> Object {
                py::list both;
                both.append(byteOf(data, 1));
                both.append(readBigEndian<float>(slice(data, 2, 4)));
                return both;
            },
            {"list[int | float]", "mode, and sampling rate in Hz", "the device"}};
}

Reply channelVoltages() {
    return {[](py::handle self, const Bytes& data) -> Object {
                const auto channels = static_cast<std::size_t>(traitsOf(self).analogOutput.channels);
                return numbersAt<float>(2, channels, {}).decode(self, data);
            },
            {"list[float]", "voltage of each channel", "the device"}};
}

Reply bufferReply() {
    return {[](py::handle, const Bytes& data) -> Object {
                py::list both;
                both.append(readBigEndian<std::uint32_t>(slice(data, 1, 4)));
                both.append(byteOf(data, 5));
                return both;
            },
            {"list[int]", "size of the buffer in samples, and mask of the enabled channels", "the device"}};
}

void checkChannels(py::handle self, py::handle channels) {
    checkIsList(channels, "channels");
    for (const py::handle each : channels) callMethod(self, "_checkAOChannel", each);
}

// Pushes exactly `count` values of the list.
Task push(Op op, Object port, Object count, Object values) {
    port = devicePort(op.self(), port);
    op.call("_checkAOPort", port);
    op.call("_checkAONumOfValues", count);
    const std::int64_t wanted = wholeNumber(count, "num_of_val", -mostItems, mostItems);
    if (wanted < 0 || static_cast<std::size_t>(wanted) > py::len(values)) {
        throw Failure(FailureId::InputDataNotInRangeError);
    }
    Payload data;
    data.add(port).add(0).add(count);
    for (std::int64_t i = 0; i < wanted; ++i) {
        data.add(pack<float>(own(PySequence_GetItem(values.ptr(), static_cast<Py_ssize_t>(i))), "value_list"));
    }
    const Object reply = co_await exchange(op, SET_AO_PUSH_TO_BUFFER, data.list());
    co_return statusOf(op, SET_AO_PUSH_TO_BUFFER, reply);
}

Task enableChannels(Op op, Object port, Object channels) {
    port = devicePort(op.self(), port);
    op.call("_checkAOPort", port);
    checkChannels(op.self(), channels);
    const Object reply = co_await exchange(op, SET_AO_ENABLED_CHANNELS, payload(port, 0, maskOfIndices(channels)));
    co_return statusOf(op, SET_AO_ENABLED_CHANNELS, reply);
}

}  // namespace

void defineAnalogOutputStreaming(Package& package) {
    const auto number = [](const char* name, const char* doc) { return Parameter{name, "float", doc}; };
    const Parameter amplitude = number("amplitude", "in volts"), offset = number("offset", "in volts"),
                    frequency = number("frequency", "in Hz"),
                    phase = number("phase", "in the device's unit").withDefault("0"),
                    dutyCycle = number("duty_cycle", "part of a period").withDefault("0.5"),
                    count{"num_samples", "int", "0 to 4294967295"};
    Feature output(package, "AOStreamingModule", {"AOModule"}, "Analog outputs that generate waveforms.");
    output.constructorFields(offered());
    output.sharing({.checks = {checkAOPort(port)}, .fields = {port | u8}, .adapt = adaptPort})
        .operations({
            {.name = "AO_openStreaming",
             .sends = OPEN_AO_STREAMING,
             .reply = modeAndRate(),
             .doc = "Prepares the generation of waveforms."},
            {.name = "AO_closeStreaming", .sends = CLOSE_AO_STREAMING, .doc = "Ends the generation of waveforms."},
            {.name = "_AO_stopStreaming", .sends = STOP_AO_STREAMING, .doc = "Stops the waveforms."},
            {.name = "AO_getValues",
             .sends = GET_AO_VALUES,
             .reply = channelVoltages(),
             .doc = "Reads the present voltages."},
            {.name = "_AO_getMode",
             .sends = GET_AO_MODE,
             .reply = byteAt(1, "mode, in the device's numbering"),
             .doc = "Reads the mode."},
            {.name = "_AO_getState",
             .sends = GET_AO_STATE,
             .reply = byteAt(1, "state, in the device's numbering"),
             .doc = "Reads the state."},
            {.name = "_AO_getCounters",
             .sends = GET_AO_COUNTERS,
             .reply = numbersAt<std::uint32_t>(1, 2, "the device's 2 counters"),
             .doc = "Reads the device's counters."},
            {.name = "_AO_initialBuffer",
             .sends = INIT_AO_BUFFER,
             .reply = bufferReply(),
             .doc = "Empties the buffer for pushed samples."},
            {.name = "AO_setForm",
             .checks = {checkAOChannel(channel), checkAOForm(form)},
             .sends = SET_AO_FORM,
             .fields = {constant(0), channel | u8, form | u8},
             .doc = "Chooses the form of a channel's wave."},
            {.name = "AO_setFormParam",
             .checks = {checkAOChannel(channel), isNumber(amplitude), isNumber(offset), isNumber(frequency),
                        isNumber(phase), isNumber(dutyCycle)},
             .sends = SET_AO_FORM_PARAM,
             .fields = {constant(0), channel | u8, amplitude | f32, offset | f32, frequency | f32, phase | f32,
                        dutyCycle | f32},
             .doc = "Sets the parameters of a channel's wave."},
            {.name = "AO_setMode",
             .checks = {checkAOMode(mode)},
             .sends = SET_AO_MODE,
             .fields = {mode | u8},
             .doc = "Sets the mode."},
            {.name = "AO_setNumSamples",
             .checks = {isInt(count)},
             .sends = SET_AO_NUM_SAMPLES,
             .fields = {count | u32},
             .doc = "Sets how many samples are generated."},
            {.name = "AO_setSamplingRate",
             .checks = {checkRate(rate)},
             .sends = SET_AO_SAMPLING_RATE,
             .fields = {rate | f32},
             .doc = "Sets the rate."},
            {.name = "_AO_setSpan",
             .checks = {checkAOSpan(span)},
             .sends = SET_AO_SPAN,
             .fields = {span | u8},
             .doc = "Sets the span."},
        });
    output
        .withoutTimeout({.name = "AO_startStreaming",
                         .parameters = {port},
                         .doc = "Starts the waveforms; there is no reply.",
                         .returns = {"int", "0"},
                         .raises = portRaises,
                         .body = [](Op op, Object port) -> Task {
                             port = devicePort(op.self(), port);
                             op.call("_checkAOPort", port);
                             co_await op.callSameForm("_sendPacketWithoutReply", py::int_(int{START_AO_STREAMING}),
                                                      payload(port));
                             co_return py::int_(0);
                         }})
        .operation({.name = "AO_setEnableChannels",
                    .parameters = {port, {"channel_list", "list[int]", "channels, counted from 0"}},
                    .doc = "Chooses the channels that generate.",
                    .returns = status(1).returns,
                    .raises = {checkAOPort, checkAOChannel, "InputTypeNotCorrectError: it is not a list"},
                    .body = enableChannels})
        .operation({.name = "_AO_pushToBuffer",
                    .parameters = {port,
                                   {"num_of_val", "int", "number of values, 0 to 13"},
                                   {"value_list", "Sequence[float]", "voltages"}},
                    .doc = "Pushes samples to the device's buffer.",
                    .returns = status(1).returns,
                    .raises = {checkAOPort, "InputDataNotInRangeError: more than 13 values, or more than the list has"},
                    .body = push});
}

}  // namespace zvr::python
