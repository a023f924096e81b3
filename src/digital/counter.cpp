// Pulse counters and the quadrature encoder: a 48-bit position and a frequency.
#include "core/wire/failures.h"
#include "digital/digital.h"

namespace zvr::python {

namespace {

const Parameter window{"window_size", "float", "window of the frequency, 32-bit float, in the device's unit"};

// The low 48 bits of a position.
template <class Number>
Field position() {
    return {"position", "48 bits of", [](Payload& data, py::handle value) {
                const Bytes wide = pack<Number>(value);
                data.add(Bytes(wide.begin() + 2, wide.end()));
            }};
}

// 1 for what is 1 or more, 0 for all else.
void appendFlag(Payload& data, py::handle value) { data.add(borrow(value.ptr()) >= py::int_(1) ? 1 : 0); }

// The channel, six bytes of position, and the frequency. `Number` says whether the position has a sign.
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

// What counter and encoder have in common.
struct Kind {
    const char* prefix;
    const char* check;
    Command open, start, read, stop, close, setWindow;
};
constexpr Kind counterKind{"Counter",   "_checkCounterChannel", PULSE_OPEN, PULSE_START, PULSE_READ, PULSE_STOP,
                           PULSE_CLOSE, PULSE_SET_FRQ_WINDOW};
constexpr Kind encoderKind{"Encoder",    "_checkEncoderIndex", ENCODER_OPEN,  ENCODER_START,
                           ENCODER_READ, ENCODER_STOP,         ENCODER_CLOSE, ENCODER_SET_FRQ_WINDOW};

void defineCommon(Feature& feature, const Kind& kind, const Parameter& channel, Reply reading) {
    const std::string prefix = kind.prefix;
    const std::vector<Check> checks{calls(kind.check, {"channel"})};
    // clang-format off
    feature.rows({
        {prefix + "_open",  {channel}, checks, kind.open,  {u8("channel")}, status(1), "Claims a channel."},
        {prefix + "_start", {channel}, checks, kind.start, {u8("channel")}, status(1), "Starts counting."},
        {prefix + "_stop",  {channel}, checks, kind.stop,  {u8("channel")}, status(1), "Stops counting."},
        {prefix + "_close", {channel}, checks, kind.close, {u8("channel")}, status(1), "Releases a channel."},
        {prefix + "_setFreqWindow", {channel, window}, checks, kind.setWindow, {u8("channel"), f32("window_size")},
            status(1), "Sets the window over which the frequency is measured."},
        {"_" + prefix + "_read", {channel}, checks, kind.read, {u8("channel")}, std::move(reading),
            "Reads position and frequency of one moment."},
    });
    // clang-format on
}

// One exchange each: two readings are of two moments.
template <const Kind& kind, int entry>
void defineReading(Feature& feature, const std::string& ending, const Parameter& channel, Returns returns) {
    feature.operation(kind.prefix + ending, {channel}, "Reads one value of a channel.", std::move(returns),
                      {"@" + std::string(kind.check)}, [](Op op, Object channel) -> Result {
                          op.call(kind.check, channel);
                          const std::string read = std::string("_") + kind.prefix + "_read";
                          const Object both = co_await op.request(read.c_str(), channel);
                          co_return own(PySequence_GetItem(both.ptr(), entry));
                      });
}

const Returns frequencyResult{"float", "frequency over the window", "the device"};

}  // namespace

void defineCounter(Package& package) {
    const Parameter channel{"channel", "int", "channel, 0 or 1"};
    const std::vector<Check> checks{calls("_checkCounterChannel", {"channel"})};
    Feature counter(package, "Counter", "Pulse counters.");
    // The failure is the one of the other module: programs that catch them know it so.
    counter.shared("_checkCounterChannel", {channel}, "Refuses a channel that no model has.", {},
                   {"PWMChannelNotAvaliableError: `channel` is neither 0 nor 1"},
                   [](py::handle, const Object& channel) {
                       if (!isOneOf(channel, {0, 1})) throw Failure(FailureId::PWMChannelNotAvaliableError);
                   });
    defineCommon(counter, counterKind, channel, reading<std::uint64_t>());
    defineReading<counterKind, 0>(counter, "_readPosition", channel,
                                  {"int", "counts, 0 to 281474976710655", "the device"});
    defineReading<counterKind, 1>(counter, "_readFrequency", channel, frequencyResult);
    counter.row({"Counter_setPosition",
                 {channel, {"position", "int", "counts; of 64 bits without sign the low 48 are sent"}},
                 checks,
                 PULSE_SET_VALUE,
                 {u8("channel"), position<std::uint64_t>()},
                 status(1),
                 "Sets the position."});
    counter.operation(
        "Counter_setEdge",
        {channel,
         {"edge", "int",
          "edge that counts, in the device's numbering, 0 to 255; the awaitable form sends 1 for all from 1 "
          "on and else 0"}},
        "Chooses the edge that counts.", status(1).returns, {"@_checkCounterChannel"},
        [](Op op, Object channel, Object edge) -> Result {
            op.call("_checkCounterChannel", channel);
            Payload data;
            data.add(channel);
            if (op.awaitable()) {
                appendFlag(data, edge);
            } else {
                if (PyIndex_Check(edge.ptr()) == 0) refuseType("edge", "an integer", edge);
                data.add(edge);
            }
            const Object reply = co_await op.exchange(PULSE_SET_EDGE, data.list());
            co_return statusOf(bytesOf(reply), 1);
        });
}

void defineEncoder(Package& package) {
    const Parameter channel{"channel", "int", "channel, 0"};
    const std::vector<Check> checks{calls("_checkEncoderIndex", {"channel"})};
    Feature encoder(package, "Encoder", "The quadrature encoder.");
    encoder.shared("_checkEncoderIndex", {{"index", "int", "channel, 0"}}, "Refuses a channel that no model has.", {},
                   {"EncoderChannelNotAvaliableError: `index` is not 0"}, [](py::handle, const Object& index) {
                       if (!isOneOf(index, {0})) throw Failure(FailureId::EncoderChannelNotAvaliableError);
                   });
    defineCommon(encoder, encoderKind, channel, reading<std::int64_t>());
    defineReading<encoderKind, 0>(encoder, "_readPosition", channel,
                                  {"int", "counts, -140737488355328 to 140737488355327", "the device"});
    defineReading<encoderKind, 1>(encoder, "_readFrequency", channel, frequencyResult);
    // clang-format off
    encoder.rows({
        {"Encoder_setPosition", {channel, {"position", "int", "counts; of 64 bits with sign the low 48 are sent"}},
            checks, ENCODER_SET_VALUE, {u8("channel"), position<std::int64_t>()}, status(1), "Sets the position."},
        {"Encoder_setDirection", {channel, {"direction", "int", "1 or more turns the counting round, else 0"}},
            checks, ENCODER_SET_DIR, {u8("channel"), {"direction", "flag", appendFlag}}, status(1),
            "Sets the counting direction."},
        {"Encoder_getDirection", {channel}, checks, ENCODER_GET_DIR, {u8("channel")},
            byteAt(1, "the direction; it is not checked for a refusal"), "Reads the counting direction."},
    });
    // clang-format on
}

}  // namespace zvr::python
