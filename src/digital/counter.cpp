// Pulse counters and the quadrature encoder: a 48-bit position and a frequency.
#include "core/wire/failures.h"
#include "digital/digital.h"

namespace zvr::python {

namespace {

const Parameter window{"window_size", "float", "window of the frequency, 32-bit float, in the device's unit"};

// The low 48 bits of a position.
template <class Number>
constexpr Encoding low48{"48 bits of",
                         [](Payload& data, py::handle value, int) { data.add(restOf(pack<Number>(value), 2)); }};

// 1 for values of 1 or more, else 0.
void appendFlag(Payload& data, py::handle value, int = 0) { data.add(borrow(value.ptr()) >= py::int_(1) ? 1 : 0); }

// The channel, six bytes of position, and the frequency. `Number` determines whether the position is signed.
template <class Number>
Reply reading() {
    return {[](py::handle, const Bytes& data) -> Object {
                const ByteView low = slice(data, 1, 6);
                const bool negative = std::is_signed_v<Number> && (low[0] & 0x80) != 0;
                Bytes wide(2, negative ? 0xFF : 0);
                wide.insert(wide.end(), low.begin(), low.end());
                py::list both;
                both.append(readBigEndian<Number>(wide));
                both.append(readBigEndian<float>(slice(data, 7, 4)));
                return both;
            },
            {"list[int | float]", "position in counts, and frequency", "the device"}};
}

// The commands common to counter and encoder.
struct Kind {
    const char* prefix;
    Command open, start, read, stop, close, setWindow;
};
constexpr Kind counterKind{.prefix = "Counter",
                           .open = PULSE_OPEN,
                           .start = PULSE_START,
                           .read = PULSE_READ,
                           .stop = PULSE_STOP,
                           .close = PULSE_CLOSE,
                           .setWindow = PULSE_SET_FRQ_WINDOW};
constexpr Kind encoderKind{.prefix = "Encoder",
                           .open = ENCODER_OPEN,
                           .start = ENCODER_START,
                           .read = ENCODER_READ,
                           .stop = ENCODER_STOP,
                           .close = ENCODER_CLOSE,
                           .setWindow = ENCODER_SET_FRQ_WINDOW};

// The operations common to both, with `counts` as the position's range.
void defineCommon(Feature& feature, const Kind& kind, const Parameter& channel, const Definition& check, Reply reading,
                  const char* counts) {
    const std::string prefix = kind.prefix, read = "_" + prefix + "_read";
    const Common onChannel{.checks = {check(channel)}, .fields = {channel | u8}};
    feature.sharing(onChannel).operations({
        {.name = prefix + "_open", .sends = kind.open, .doc = "Claims a channel."},
        {.name = prefix + "_start", .sends = kind.start, .doc = "Starts counting."},
        {.name = prefix + "_stop", .sends = kind.stop, .doc = "Stops counting."},
        {.name = prefix + "_close", .sends = kind.close, .doc = "Releases a channel."},
        {.name = prefix + "_setFreqWindow",
         .sends = kind.setWindow,
         .fields = {window | f32},
         .doc = "Sets the window over which the frequency is measured."},
        {.name = "_" + prefix + "_read",
         .sends = kind.read,
         .reply = std::move(reading),
         .doc = "Reads position and frequency of one moment."},
    });
    // Each reading is an exchange of its own, so two are not simultaneous.
    const auto defineReading = [&](const std::string& ending, Returns returns, Py_ssize_t entry) {
        feature.operation({.name = prefix + ending,
                           .parameters = {channel},
                           .doc = "Reads one value of a channel.",
                           .returns = std::move(returns),
                           .raises = {check},
                           .body = [check = check.name, read, entry](Op op, Object channel) -> Task {
                               op.call(check.c_str(), channel);
                               co_return itemOf(co_await op.request(read.c_str(), channel), entry);
                           }});
    };
    defineReading("_readPosition", {"int", counts, "the device"}, 0);
    defineReading("_readFrequency", {"float", "frequency over the window", "the device"}, 1);
}

}  // namespace

void defineCounter(Package& package) {
    const Parameter channel{"channel", "int", "channel, 0 or 1"};
    const Definition checkCounterChannel{
        .name = "_checkCounterChannel",
        .parameters = {channel},
        .doc = "Raises PWMChannelNotAvaliableError unless the channel is 0 or 1 (compatibility note 2).",
        .raises = {"PWMChannelNotAvaliableError: `channel` is neither 0 nor 1"},
        .body = [](py::handle, const Object& channel) {
            if (!isOneOf(channel, {0, 1})) throw Failure(FailureId::PWMChannelNotAvaliableError);
        }};
    Feature counter(package, "Counter", "Pulse counters.");
    // Compat 2: the error is that of the PWM module.
    counter.shared(checkCounterChannel);
    defineCommon(counter, counterKind, channel, checkCounterChannel, reading<std::uint64_t>(),
                 "counts, 0 to 281474976710655");
    const Parameter position{"position", "int", "counts; of 64 bits without sign the low 48 are sent"};
    counter.operation(Request{.name = "Counter_setPosition",
                              .checks = {checkCounterChannel(channel)},
                              .sends = PULSE_SET_VALUE,
                              .fields = {channel | u8, position | low48<std::uint64_t>},
                              .doc = "Sets the position."});
    counter.operation(
        {.name = "Counter_setEdge",
         .parameters =
             {channel,
              {"edge", "int",
               "edge that counts, in the device's numbering, 0 to 255; the awaitable form sends 1 for all from 1 "
               "on and else 0 (compatibility note 3)"}},
         .doc = "Chooses the edge that counts.",
         .returns = status(1).returns,
         .raises = {checkCounterChannel},
         .body = [](Op op, Object channel, Object edge) -> Task {
             op.call("_checkCounterChannel", channel);
             Payload data;
             data.add(channel);
             if (op.awaitable()) {  // Compat 3
                 appendFlag(data, edge);
             } else {
                 if (PyIndex_Check(edge.ptr()) == 0) refuseType("edge", "an integer", edge);
                 data.add(edge);
             }
             const Object reply = co_await exchange(op, PULSE_SET_EDGE, data.list());
             co_return statusOf(op, PULSE_SET_EDGE, reply);
         }});
}

void defineEncoder(Package& package) {
    const Parameter channel{"channel", "int", "channel, 0"};
    const Parameter position{"position", "int", "counts; of 64 bits with sign the low 48 are sent"};
    const Parameter direction{"direction", "int", "1 or more reverses the counting direction, else 0"};
    const Definition checkIndex{.name = "_checkEncoderIndex",
                                .parameters = {{"index", "int", "channel, 0"}},
                                .doc = "Raises EncoderChannelNotAvaliableError unless the channel is 0.",
                                .raises = {"EncoderChannelNotAvaliableError: `index` is not 0"},
                                .body = [](py::handle, const Object& index) {
                                    if (!isOneOf(index, {0})) throw Failure(FailureId::EncoderChannelNotAvaliableError);
                                }};
    const Common onChannel{.checks = {checkIndex(channel)}, .fields = {channel | u8}};
    Feature encoder(package, "Encoder", "The quadrature encoder.");
    encoder.shared(checkIndex);
    defineCommon(encoder, encoderKind, channel, checkIndex, reading<std::int64_t>(),
                 "counts, -140737488355328 to 140737488355327");
    encoder.sharing(onChannel).operations({
        {.name = "Encoder_setPosition",
         .sends = ENCODER_SET_VALUE,
         .fields = {position | low48<std::int64_t>},
         .doc = "Sets the position."},
        {.name = "Encoder_setDirection",
         .sends = ENCODER_SET_DIR,
         .fields = {direction | Encoding{"flag", appendFlag}},
         .doc = "Sets the counting direction."},
        {.name = "Encoder_getDirection",
         .sends = ENCODER_GET_DIR,
         .reply = byteAt(1, "the direction; it is not checked for a refusal"),
         .doc = "Reads the counting direction."},
    });
}

}  // namespace zvr::python
