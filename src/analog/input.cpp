// Analog input: ports, configuration, limits and on-demand reads of the models that can stream.
#include "analog/input.h"
#include "analog/analog.h"
#include "core/wire/failures.h"
#include "digital/pin_map.h"
#include "models/traits.h"

namespace zvr::python {

namespace {

const Parameter& port = inputPortParameter;
const Parameter rate{"sampling_rate", "float",
                     "rows per second in Hz; the limit depends on the model and on what is enabled"};
const Raises portRaises{checkAIPort};

const AnalogInput& traitsOfInput(py::handle self) { return traitsOf(self).analogInput; }

// The port that settings apply to, in the device's numbering.
Object configuredPort(py::handle self, const Object& port) {
    return traitsOfInput(self).configuresPort0 ? Object(py::int_(0)) : devicePort(self, port);
}

// Modules without streaming have no flag and no thread.
void openFlag(py::handle self) {
    const Object flag = attributeOrNothing(self, "ai_open_flag");
    if (!flag || isTrue(flag)) return;
    setAttribute(self, "ai_open_flag", py::bool_(true));
    callMethod(attribute(self, "ai_lock"), "release");
}

void closeFlag(py::handle self) {
    const Object flag = attributeOrNothing(self, "ai_open_flag");
    if (!flag || !isTrue(flag)) return;
    setAttribute(self, "ai_open_flag", py::bool_(false));
    callMethod(attribute(self, "ai_lock"), "acquire", py::bool_(false));
    for (const py::handle queue : attribute(self, "ai_data_queue_list")) callMethod(queue, "put", py::none());
    dropSpareLists(self);
}

Task openOrClose(Op op, Object port, Command command, void (*turn)(py::handle)) {
    const AnalogInput& traits = traitsOfInput(op.self());
    if (traits.configuresPort0) port = py::int_(0);
    if (traits.opensByItself) {
        turn(op.self());
        co_return py::int_(0);
    }
    op.call("_checkAIPort", port);
    const Object reply = co_await exchange(op, command, payload(port));
    byteOf(bytesOf(reply), 1);
    turn(op.self());
    co_return statusOf(op, command, reply);
}

void defineUnion(Package& package) {
    Feature all(package, "AIUnion", {}, "Base of every analog input.");
    all.shared(checkAIPort)
        .field({"ai_dict", "dict[int, list[int]]", "ports of the analog input"})
        .shared({.name = "_convertAITriggerModeToMask",
                 .parameters = {{"mode", "int", "trigger mode, 0 to 6"}},
                 .doc = "Trigger mode as the device's mask.",
                 .returns = {"int", "1 to 7"},
                 .body = [](py::handle, const Object& mode) -> Object {
                     return isOneOf(mode, {0, 1, 2, 3, 4, 5}) ? mode + py::int_(1) : Object(py::int_(7));
                 }})
        .operation({.name = "AI_open",
                    .parameters = {port},
                    .doc = "Opens a port and starts decoding.",
                    .returns = status(1).returns,
                    .raises = portRaises,
                    .body = [](Op op, Object port) { return openOrClose(std::move(op), port, OPEN_AI, openFlag); }})
        .operation({.name = "AI_close",
                    .parameters = {port},
                    .doc = "Closes a port and stops decoding. Rows already decoded stay readable.",
                    .returns = status(1).returns,
                    .raises = portRaises,
                    .body = [](Op op, Object port) { return openOrClose(std::move(op), port, CLOSE_AI, closeFlag); }});
}

std::size_t channelsOf(py::handle self) {
    return static_cast<std::size_t>(wholeNumber(attribute(self, "ai_num_channels"), "ai_num_channels", 0, 65535));
}

/// The highest rate with the enabled number of channels, or chip selects of the port; empty without a limit.
std::optional<double> rateLimit(py::handle self, const Object& port) {
    const AnalogInput& traits = traitsOfInput(self);
    if (traits.rates.empty()) return std::nullopt;
    if (traits.rates.size() == 1) return traits.rates[0];
    const bool byChipSelects = traits.enables == Enables::chipSelects;
    const std::size_t enabled = byChipSelects ? py::len(chipSelectsOf(self, port)) : channelsOf(self);
    if (enabled < 1 || enabled > traits.rates.size()) return std::nullopt;
    return traits.rates[enabled - 1];
}

void checkRate(py::handle self, const Object& port, const Object& rate) {
    checkIsNumber(rate, "rate");
    const auto limit = rateLimit(self, port);
    if (limit && rate > py::float_(*limit)) throw Failure(FailureId::AIRateNotVaildError);
}

Task setMode(Op op, Object port, Object mode) {
    port = configuredPort(op.self(), port);
    op.call("_checkAIPort", port);
    op.call("_checkAIMode", mode);
    setAttribute(op.self(), "ai_mode", mode);
    const Object reply = co_await exchange(op, SET_AI_MODE, payload(port, mode));
    co_return statusOf(op, SET_AI_MODE, reply);
}

}  // namespace

void adaptConfiguredPort(py::handle self, std::vector<Object>& arguments) {
    arguments[0] = configuredPort(self, arguments[0]);
}

void defineInputConfiguration(Feature& feature) {
    const Parameter count{"num_samples", "int", "rows of one acquisition, 0 to 4294967295"};
    const Definition checkAIMode =
        accepting("_checkAIMode", {"mode", "int", "0, 1 or 2"}, FailureId::AIModeNotAvaliableError, {0, 1, 2});
    const Definition checkSamplingRate{
        .name = "_ckeckAISamplingRate",
        .parameters = {{"port", "int", "port as the device counts it"}, rate},
        .doc = "Raises AIRateNotVaildError if the rate is above the model's limit.",
        .raises = {"InputTypeNotCorrectError: the rate is not a number", "AIRateNotVaildError: it is above the limit"},
        .body = checkRate};
    feature.shared(checkAIMode)
        .shared(checkSamplingRate)
        .operation({.name = "AI_setMode",
                    .parameters = {port, {"mode", "int", "0 on demand, 1 a number of rows, 2 continuous"}},
                    .doc = "Sets the mode of acquisition.",
                    .returns = status(1).returns,
                    .raises = {checkAIPort, checkAIMode},
                    .body = setMode})
        .operation(Request{.name = "AI_setNumSamples",
                           .checks = {isInt(count), checkAIPort(port)},
                           .sends = SET_AI_NUM_SAMPLES,
                           .fields = {port | u8, count | u32},
                           .adapt = adaptConfiguredPort,
                           .doc = "Sets how many rows an acquisition of mode 1 has."})
        .operation(Request{.name = "AI_setSamplingRate",
                           .checks = {checkAIPort(port), checkSamplingRate(port, rate)},
                           .sends = SET_AI_SAMPLING_RATE,
                           .fields = {port | u8, rate | f32},
                           .adapt = adaptConfiguredPort,
                           .doc = "Sets the rate."});
}

namespace {

void adaptStreamedPort(py::handle self, std::vector<Object>& arguments) {
    if (traitsOfInput(self).streamsPort0) arguments[0] = py::int_(0);
}

Reply streamingSettings() {
    return {[](py::handle self, const Bytes& data) -> Object {
                py::list settings;
                settings.append(readBigEndian<std::uint32_t>(slice(data, 2, 4)));
                const auto rate = readBigEndian<float>(slice(data, 6, 4));
                settings.append(rate);
                settings.append(byteOf(data, 10));
                noteRate(self, data[0], rate);
                return settings;
            },
            {"list[int | float]", "number of samples, sampling rate in Hz, and mode", "the device"}};
}

Reply endOfStreaming() {
    Reply reply = status(1);
    reply.whole = [status = std::move(reply.whole)](const Op& op, const SentCommand& command, const Object& answer) {
        Object result = status(op, command, answer);
        noteEnd(op.self(), bytesOf(answer)[0]);
        return result;
    };
    return reply;
}

Task startStreaming(Op op, Object port) {
    port = devicePort(op.self(), port);
    op.call("_checkAIPort", port);
    noteStart(op.self(), port);
    co_await op.callSameForm("_sendPacketWithoutReply", attribute(op.self(), "ai_strm_cmd"), payload(port));
    co_return py::int_(0);
}

// The constructors belong to the modules, since their parameters differ.
void defineBased(Package& package) {
    Feature based(package, "AIBased", {"AIUnion"}, "Base of every streaming analog input.");
    based.field({"ai_max_rate", "int", "highest rate of the model in Hz"})
        .field({"ai_echo_cmd", "int", "command of an on-demand read"})
        .field({"ai_strm_cmd", "int", "command that starts streaming, and of its frames"})
        .field({"ai_mode", "int", "mode set last"})
        .field({"chip_select_p0", "list[int]", "chip selects enabled on port 0"})
        .field({"chip_select_p1", "list[int]", "chip selects enabled on port 1"})
        .field({"chip_select_p3", "list[int]", "chip selects enabled on port 3"});
    defineInputConfiguration(based);
    defineInputStreaming(based);
    based.operation(Request{.name = "AI_openStreaming",
                            .checks = {checkAIPort(port)},
                            .sends = OPEN_AI_STREAMING,
                            .fields = {port | u8},
                            .reply = streamingSettings(),
                            .adapt = adaptStreamedPort,
                            .doc = "Prepares streaming. The port is not counted from 1 here (compatibility note 19)."});
    based.operation({.name = "AI_startStreaming",
                     .parameters = {port},
                     .doc = "Starts streaming; there is no reply.",
                     .returns = {"int", "0"},
                     .raises = portRaises,
                     .body = startStreaming});
    based.sharing({.checks = {checkAIPort(port)}, .fields = {port | u8}, .adapt = adaptPort})
        .operations({
            {.name = "AI_closeStreaming",
             .sends = CLOSE_AI_STREAMING,
             .reply = endOfStreaming(),
             .doc = "Stops streaming. Rows already received stay readable."},
            {.name = "_AI_readBufferStatus",
             .sends = CHECK_BUFFER_STATUS,
             .reply = numbersAt<std::uint32_t>(0, 4, "the 4 counters of the device's buffer"),
             .doc = "Reads the state of the device's buffer."},
            {.name = "_AI_clearBufferStatus",
             .sends = CLEAR_DATA,
             .doc = "Clears the counters of the device's buffer."},
        });
    based.operations({{.name = "_AI_getCounter",
                       .sends = GET_AI_COUNTERS,
                       .fields = {port | u8},
                       .reply = numbersAt<std::uint32_t>(0, 9, "the device's 9 counters"),
                       .adapt = adaptPort,
                       .doc = "Reads the device's counters."}});
}

// One chip select's samples, two bytes each from byte 2 on.
void appendSamples(py::handle self, py::list& values, const Bytes& data) {
    const std::size_t channels = channelsOf(self);
    const auto scale = Scale16::of(numberOf<double>(attribute(self, "ai_ratio"), "ai_ratio"));
    const ByteView samples = slice(data, 2, 2 * channels);
    for (std::size_t i = 0; i < channels; ++i) values.append((*scale)(read16(samples.data() + 2 * i)));
}

Task readOnDemand(Op op, Object port) {
    port = devicePort(op.self(), port);
    op.call("_checkAIPort", port);
    py::list values;
    for (const py::handle chipSelect : py::list(chipSelectsOf(op.self(), port))) {
        const Object command = attribute(op.self(), "ai_echo_cmd");
        Payload data;
        data.add(port);
        if (command.equal(py::int_(int{READ_AI_ON_DEMAND}))) data.add(chipSelect);
        const Object reply = co_await op.request("_echoPacketWithRetry", command, data.list());
        appendSamples(op.self(), values, bytesOf(reply));
    }
    co_return values;
}

Task enableChannels(Op op, Object port, Object channels) {
    if (traitsOfInput(op.self()).enables != Enables::channels) throw Failure(FailureId::APINotSupportError);
    op.call("_checkAIPort", port);
    op.call("_checkAIChannel", channels);
    setAttribute(op.self(), "ai_num_channels", channels);
    const Object reply = co_await exchange(op, SET_AI_ENABLED_CS, payload(port, channels));
    co_return statusOf(op, SET_AI_ENABLED_CS, reply);
}

Task enableChipSelects(Op op, Object slot, Object chipSelects) {
    if (traitsOfInput(op.self()).enables != Enables::chipSelects) throw Failure(FailureId::APINotSupportError);
    const Object port = devicePort(op.self(), slot);
    op.call("_checkAIPort", port);
    for (const py::handle each : chipSelects) op.call("_checkAIChipSelect", each);
    for (const auto& [number, field] : {std::pair{0, "chip_select_p0"}, {1, "chip_select_p1"}, {3, "chip_select_p3"}}) {
        if (port.equal(py::int_(number))) setAttribute(op.self(), field, chipSelects);
    }
    const Object reply = co_await exchange(op, SET_AI_ENABLED_CS, payload(port, maskOfIndices(chipSelects)));
    co_return statusOf(op, SET_AI_ENABLED_CS, reply);
}

constexpr int allTriggerModes = 7;

Task setTriggerMode(Op op, Object port, Object mode) {
    const int modes = traitsOfInput(op.self()).triggerModes;
    if (isOneFrom(mode, modes, allTriggerModes - modes)) throw Failure(FailureId::APINotSupportError);
    port = devicePort(op.self(), port);
    op.call("_checkAIPort", port);
    op.call("_checkAITriggerMode", mode);
    const Object mask = op.call("_convertAITriggerModeToMask", mode);
    const Object reply = co_await exchange(op, AI_SET_TRIG_MODE, payload(port, mask));
    co_return statusOf(op, AI_SET_TRIG_MODE, reply);
}

Reply samplesReply() {
    return {[](py::handle self, const Bytes& data) -> Object {
                py::list values;
                appendSamples(self, values, data);
                return values;
            },
            {"list[float]", "volts, rounded to 4 decimals, one per channel", "the device"}};
}

void defineModule(Package& package) {
    const Definition checkAIChannel{.name = "_checkAIChannel",
                                    .parameters = {{"channel", "int", "number of channels, 1 to the model's"}},
                                    .doc = "Raises AIChannelNotAvaliableError unless the model has so many channels.",
                                    .raises = {"InputTypeNotCorrectError: `channel` is not an integer",
                                               "AIChannelNotAvaliableError: the model has not so many channels"},
                                    .body = [](py::handle self, const Object& count) {
                                        checkIsInt(count, "channel");
                                        if (isOneFrom(count, 1, traitsOfInput(self).channels)) return;
                                        throw Failure(FailureId::AIChannelNotAvaliableError);
                                    }};
    const Definition checkAIChipSelect{
        .name = "_checkAIChipSelect",
        .parameters = {{"cs", "int", "chip select, 0 to 2"}},
        .doc = "Raises AICSNotAvaliableError unless the model has the chip select.",
        .raises = {"InputTypeNotCorrectError: `cs` is not an integer", "AICSNotAvaliableError: another chip select"},
        .body = [](py::handle self, const Object& chipSelect) {
            checkIsInt(chipSelect, "cs");
            if (isOneFrom(chipSelect, 0, traitsOfInput(self).chipSelects)) return;
            throw Failure(FailureId::AICSNotAvaliableError);
        }};
    const Definition checkAITriggerMode = accepting("_checkAITriggerMode", {"mode", "int", "trigger mode, 0 to 6"},
                                                    FailureId::AITriggerModeNotAvaliableError, {0, 1, 2, 3, 4, 5, 6});
    const Parameter variable{"ai_variable", "bool", "whether the number of channels can be chosen", "False"};
    Feature input(package, "AIModule", {"Packet", "AIBased"}, "Analog inputs of 16 bits.");
    input.shared(portLines(inputPorts))
        .operation(lineCheck(inputPorts))
        .constructor({{"ai_dict", "dict[int, list[int]]", "ports of the analog input"},
                      {"ai_max_rate", "int", "highest rate of the model in Hz"},
                      {"ai_ratio", "float", "volts per count"},
                      {"ai_num_channels", "int", "channels of a row of each chip select"},
                      variable},
                     [](py::handle self, const Object& ports, const Object& rate, const Object& ratio,
                        const Object& channels, const Object& variable) {
                         const bool chosen = truthOf(variable);
                         constructInput(self, {ports, rate, ratio, channels, chosen,
                                               chosen ? START_AI_STREAMING_VARIABLE : START_AI_STREAMING});
                     })
        .shared(checkAIChannel)
        .shared(checkAIChipSelect)
        .shared(checkAITriggerMode)
        .operation({.name = "AI_readOnDemand",
                    .parameters = {port},
                    .doc = "Reads all channels once.",
                    .returns = {"list[float]",
                                "volts, rounded to 4 decimals, all channels of the enabled chip selects in order",
                                "the device"},
                    .raises = portRaises,
                    .body = readOnDemand})
        .operation(
            {.name = "AI_enableChannel",
             .parameters = {port, {"channel", "int", "number of channels, 1 to the model's, counted from channel 0"}},
             .doc = "Chooses how many channels are read.",
             .returns = status(1).returns,
             .raises = {checkAIPort, checkAIChannel, "APINotSupportError: the model's number is fixed"},
             .body = enableChannels})
        .operation({.name = "AI_enableCS",
                    .parameters = {{"slot", "int", "slot of the chassis, 1, 2 or 4"},
                                   {"chip_select", "list[int]", "chip selects, 0 to 2"}},
                    .doc = "Chooses the chip selects of a slot.",
                    .returns = status(1).returns,
                    .raises = {checkAIPort, checkAIChipSelect, "APINotSupportError: the model is no chassis"},
                    .body = enableChipSelects})
        .operation(
            {.name = "AI_setTriggerMode",
             .parameters = {port, {"mode", "int", "trigger mode, 0 or 1; up to 6 on USB models"}},
             .doc = "Chooses what starts an acquisition.",
             .returns = status(1).returns,
             .raises = {checkAIPort, checkAITriggerMode, "APINotSupportError: the model has the modes 0 and 1 only"},
             .body = setTriggerMode})
        .operation(Request{.name = "_AI_getDataRTC",
                           .checks = {checkAIPort(port)},
                           .sends = AI_GET_DATA,
                           .fields = {port | u8, constant(0)},
                           .reply = samplesReply(),
                           .adapt = adaptPort,
                           .doc = "Reads the samples that the device took with its clock."});
    defineInputReading(input);
}

}  // namespace

void defineAnalogInput(Package& package) {
    defineUnion(package);
    defineBased(package);
    defineModule(package);
}

}  // namespace zvr::python
