// Analog outputs: static voltages, and the waveforms that the device generates.
#include "analog/analog.h"
#include "analog/input.h"
#include "core/wire/failures.h"
#include "digital/pin_map.h"
#include "models/traits.h"

namespace zvr::python {

namespace {

const Parameter port{"port", "int", "port of the analog output; on the chassis the slot, 1, 2 or 4"};
const Parameter channel{"channel", "int", "channel, 0 to 7"};
const Raises portRaises{"@_checkAOPort"};
constexpr PinnedPorts outputPorts{"AO", "ao_dict", "ao_port", FailureId::AOPortNotAvaliableError};
const std::vector<Check> portChecks{calls("_checkAOPort", {"port"})};
const std::vector<Check> channelChecks{calls("_checkAOPort", {"port"}), calls("_checkAOChannel", {"channel"})};

void checkVolts(py::handle self, py::handle values) {
    checkItems(values, attribute(self, "ao_volt_min"), attribute(self, "ao_volt_max"));
}

void checkChannel(py::handle self, const Object& channel) {
    checkIsInt(channel);
    if (isOneFrom(channel, 0, traitsOf(self).analogOutput.channels)) return;
    throw Failure(FailureId::AOChannelNotAvaliableError);
}

Result open(Op op, Object port) {
    const AnalogOutput& output = traitsOf(op.self()).analogOutput;
    if (output.opensByItself) co_return py::int_(0);
    op.call("_checkAOPort", port);
    if (output.sharesLines) {
        py::list idle;
        idle.append("Idle");
        co_await op.request("_checkAOPinState", port, idle);
    }
    const Object reply = co_await op.exchange(OPEN_AO, payload(port));
    co_return statusOf(bytesOf(reply), 1);
}

Result close(Op op, Object port) {
    if (traitsOf(op.self()).analogOutput.opensByItself) co_return py::int_(0);
    op.call("_checkAOPort", port);
    const Object reply = co_await op.exchange(CLOSE_AO, payload(port));
    co_return statusOf(bytesOf(reply), 1);
}

Result writeOne(Op op, Object port, Object channel, Object value) {
    port = devicePort(op.self(), port);
    op.call("_checkAOPort", port);
    op.call("_checkAOChannel", channel);
    checkIsNumber(value);
    py::list alone;
    alone.append(value);
    checkVolts(op.self(), alone);
    const Object reply = co_await op.exchange(WRITE_AO_BY_CHANNEL, payload(port, channel, pack<float>(value)));
    co_return statusOf(bytesOf(reply), 1);
}

Result writeAll(Op op, Object port, Object values) {
    port = devicePort(op.self(), port);
    op.call("_checkAOPort", port);
    checkIsList(values);
    checkVolts(op.self(), values);
    const Object adjust = attribute(py::module_::import("pyzvr"), "adjustDataList");
    Payload data;
    data.add(port);
    for (const py::handle value : callObject(adjust, values, attribute(op.self(), "ao_channel"))) {
        data.add(pack<float>(value, "value_list"));
    }
    const Object reply = co_await op.exchange(WRITE_AO_SYNCHRONIZED, data.list());
    co_return statusOf(bytesOf(reply), 1);
}

void defineChecks(Feature& output) {
    const auto codeParameter = [](const char* name, const char* doc) { return Parameters{{name, "int", doc}}; };
    const auto typed = [](const char* failure) {
        return Raises{"InputTypeNotCorrectError: it is no integer", std::string(failure) + ": another value"};
    };
    definePinCheck<outputPorts>(definePortCheck<outputPorts>(output))
        .shared("_checkAOChannel", codeParameter("channel", "channel, 0 to 7"), "Refuses another channel.", {},
                typed("AOChannelNotAvaliableError"), Calls<checkChannel>{})
        .shared("_checkAOForm", codeParameter("form", "1, 2 or 3"), "Refuses another form.", {},
                typed("AOFormNotAvaliableError"), Calls<checkAccepted<FailureId::AOFormNotAvaliableError, 1, 2, 3>>{})
        .shared("_checkAOMode", codeParameter("mode", "0, 1 or 2"), "Refuses another mode.", {},
                typed("AOModeNotVaildError"), Calls<checkAccepted<FailureId::AOModeNotVaildError, 0, 1, 2>>{})
        .shared("_checkAOSpan", codeParameter("span", "0 to 4"), "Refuses another span.", {},
                typed("AOSpanNotVaildError"), Calls<checkAccepted<FailureId::AOSpanNotVaildError, 0, 1, 2, 3, 4>>{})
        .shared("_ckeckAOSamplingRate", {{"rate", "float", "rate in Hz"}}, "Refuses a rate above the model's limit.",
                {}, {"InputTypeNotCorrectError: it is no number", "AORateNotVaildError: it is above the limit"},
                [](py::handle self, const Object& rate) {
                    checkIsNumber(rate);
                    if (rate > attribute(self, "ao_rate")) throw Failure(FailureId::AORateNotVaildError);
                })
        .shared("_checkAONumOfValues", {{"value", "int", "number of values, at most 13"}},
                "Refuses more values than one push takes.", {}, typed("InputDataNotInRangeError"),
                [](py::handle, const Object& value) {
                    checkIsInt(value);
                    if (value > py::int_(13)) throw Failure(FailureId::InputDataNotInRangeError);
                });
}

std::vector<FieldDoc> offered() {
    return {{"ao_dict", "dict[int, list[Any]]", "ports of the analog output, each with its channels or lines"},
            {"ao_volt_min", "float", "lowest voltage"},
            {"ao_volt_max", "float", "highest voltage"},
            {"ao_channel", "int", "number of channels"},
            {"ao_rate", "int", "highest rate in Hz"}};
}

// The same number by its other name.
void defineMaxRate(Feature& output) {
    output.property(
        {"ao_max_rate", "int", "Highest rate in Hz: `ao_rate`."},
        [](py::handle self) { return attribute(self, "ao_rate"); },
        [](py::handle self, const Object& rate) { setAttribute(self, "ao_rate", rate); });
}

}  // namespace

void defineAnalogOutput(Package& package) {
    const Returns result = status(1).returns;
    const Parameter volts{"value", "float", "voltage, between `ao_volt_min` and `ao_volt_max`; 32-bit float"};
    Feature output(package, "AO", "Analog outputs.");
    defineChecks(output);
    defineMaxRate(output);
    output.offers(offered())
        .shared("AO_getPort", {}, "Tells which ports there are.", {"list[int]", "port numbers", "the model's table"},
                {}, [](py::handle self) { return py::list(attribute(self, "ao_dict")); })
        .operation("AO_open", {port}, "Opens a port, whose lines must be idle.", result,
                   {"@_checkAOPort", "@_checkAOPinState"}, Calls<open>{})
        .operation("AO_close", {port}, "Closes a port.", result, portRaises, Calls<close>{})
        .operation("AO_writeOneChannel", {port, channel, volts}, "Sets the voltage of a channel.", result,
                   {"@_checkAOPort", "@_checkAOChannel", "InputDataNotInRangeError: the voltage is out of range"},
                   Calls<writeOne>{})
        .operation("AO_writeAllChannels",
                   {port, {"value_list", "list[float]", "voltages; a shorter list is filled, a longer one cut"}},
                   "Sets the voltages of all channels at once.", result,
                   {"@_checkAOPort", "InputTypeNotCorrectError: it is no list",
                    "InputDataNotInRangeError: a voltage is out of range"},
                   Calls<writeAll>{});
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
    checkIsList(channels);
    for (const py::handle each : channels) callMethod(self, "_checkAOChannel", each);
}

// Exactly so many values of the list.
Result push(Op op, Object port, Object count, Object values) {
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
    const Object reply = co_await op.exchange(SET_AO_PUSH_TO_BUFFER, data.list());
    co_return statusOf(bytesOf(reply), 1);
}

Result enableChannels(Op op, Object port, Object channels) {
    port = devicePort(op.self(), port);
    op.call("_checkAOPort", port);
    checkChannels(op.self(), channels);
    const Object reply = co_await op.exchange(SET_AO_ENABLED_CHANNELS, payload(port, 0, maskOfIndices(channels)));
    co_return statusOf(bytesOf(reply), 1);
}

}  // namespace

void defineAnalogOutputStreaming(Package& package) {
    const auto number = [](const char* name, const char* doc) { return Parameter{name, "float", doc}; };
    const auto checked = [](const char* check, const char* argument) {
        return std::vector<Check>{calls("_checkAOPort", {"port"}), calls(check, {argument})};
    };
    const auto portRow = [&](const char* name, Command command, Reply reply, const char* summary) {
        return Row{name, {port}, portChecks, command, {u8("port")}, std::move(reply), summary, adaptPort};
    };
    Feature output(package, "AOStreamingModule", {"AOModule"}, "Analog outputs that generate waveforms.");
    output.offers(offered());
    // clang-format off
    output.rows({
        portRow("AO_openStreaming",   OPEN_AO_STREAMING,  modeAndRate(), "Prepares the generation of waveforms."),
        portRow("AO_closeStreaming",  CLOSE_AO_STREAMING, status(1), "Ends the generation of waveforms."),
        portRow("_AO_stopStreaming",  STOP_AO_STREAMING,  status(1), "Stops the waveforms."),
        portRow("AO_getValues",       GET_AO_VALUES, channelVoltages(), "Reads the present voltages."),
        portRow("_AO_getMode",        GET_AO_MODE,   byteAt(1, "mode, in the device's numbering"), "Reads the mode."),
        portRow("_AO_getState",       GET_AO_STATE,  byteAt(1, "state, in the device's numbering"), "Reads the state."),
        portRow("_AO_getCounters",    GET_AO_COUNTERS, numbersAt<std::uint32_t>(1, 2, "the device's 2 counters"), "Reads the device's counters."),
        portRow("_AO_initialBuffer",  INIT_AO_BUFFER, bufferReply(), "Empties the buffer for pushed samples."),
        {"AO_setForm", {port, channel, {"form", "int", "form of the wave, 1, 2 or 3"}},
            {channelChecks[0], channelChecks[1], calls("_checkAOForm", {"form"})}, SET_AO_FORM,
            {u8("port"), constant(0), u8("channel"), u8("form")}, status(1), "Chooses the form of a channel's wave.", adaptPort},
        {"AO_setFormParam", {port, channel, number("amplitude", "in volts"), number("offset", "in volts"), number("frequency", "in Hz"),
            number("phase", "in the device's unit").withDefault("0"), number("duty_cycle", "part of a period").withDefault("0.5")},
            {channelChecks[0], channelChecks[1], isNumber("amplitude"), isNumber("offset"), isNumber("frequency"), isNumber("phase"), isNumber("duty_cycle")},
            SET_AO_FORM_PARAM,
            {u8("port"), constant(0), u8("channel"), f32("amplitude"), f32("offset"), f32("frequency"), f32("phase"), f32("duty_cycle")},
            status(1), "Sets the parameters of a channel's wave.", adaptPort},
        {"AO_setMode", {port, {"mode", "int", "0, 1 or 2"}}, checked("_checkAOMode", "mode"), SET_AO_MODE,
            {u8("port"), u8("mode")}, status(1), "Sets the mode.", adaptPort},
        {"AO_setNumSamples", {port, {"num_samples", "int", "0 to 4294967295"}}, {portChecks[0], isInt("num_samples")},
            SET_AO_NUM_SAMPLES, {u8("port"), packed<std::uint32_t>("u32", "num_samples")}, status(1),
            "Sets how many samples are generated.", adaptPort},
        {"AO_setSamplingRate", {port, number("sampling_rate", "in Hz, at most `ao_rate`")},
            checked("_ckeckAOSamplingRate", "sampling_rate"), SET_AO_SAMPLING_RATE, {u8("port"), f32("sampling_rate")},
            status(1), "Sets the rate.", adaptPort},
        {"_AO_setSpan", {port, {"span", "int", "0 to 4"}}, checked("_checkAOSpan", "span"), SET_AO_SPAN,
            {u8("port"), u8("span")}, status(1), "Sets the span.", adaptPort},
    });
    // clang-format on
    output
        .untimed("AO_startStreaming", {port}, "Starts the waveforms; there is no reply.", {"int", "0"}, portRaises,
                 [](Op op, Object port) -> Result {
                     port = devicePort(op.self(), port);
                     op.call("_checkAOPort", port);
                     co_await op.same("_sendPacketWithoutReply", py::int_(int{START_AO_STREAMING}), payload(port));
                     co_return py::int_(0);
                 })
        .operation("AO_setEnableChannels", {port, {"channel_list", "list[int]", "channels, 0 to 7"}},
                   "Chooses the channels that generate.", status(1).returns,
                   {"@_checkAOPort", "@_checkAOChannel", "InputTypeNotCorrectError: it is no list"},
                   Calls<enableChannels>{})
        .operation(
            "_AO_pushToBuffer",
            {port, {"num_of_val", "int", "number of values, 0 to 13"}, {"value_list", "Sequence[float]", "voltages"}},
            "Pushes samples to the device's buffer.", status(1).returns,
            {"@_checkAOPort", "InputDataNotInRangeError: more than 13 values, or more than the list has"},
            Calls<push>{});
}

}  // namespace zvr::python
