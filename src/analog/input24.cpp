// Analog inputs of 24 bits: the streaming one, and those of the current and voltage boxes.
#include "analog/analog.h"
#include "analog/input.h"

namespace zvr::python {

namespace {

// One sample of three bytes per channel from byte 2 on, decoded by `convert`.
template <class Convert>
py::list samples(py::handle self, const Bytes& data, Convert convert) {
    py::list values;
    const auto channels = static_cast<std::size_t>(traitsOf(self).analogInput.channels);
    const ByteView bytes = slice(data, 2, 3 * channels);
    for (std::size_t i = 0; i < channels; ++i) values.append(convert(bytes.data() + 3 * i));
    return values;
}

Reply twosComplement() {
    return {[](py::handle self, const Bytes& data) -> Object {
                const auto ratio = numberOf<double>(attribute(self, "ai_ratio"), "ai_ratio");
                return samples(self, data, [ratio](const std::uint8_t* sample) { return read24(sample) * ratio; });
            },
            {"list[float]", "volts, one per channel", "the device"}};
}

// Offset binary around the middle; the box's port decides full scale.
Reply offsetBinary() {
    return {[](py::handle self, const Bytes& data) -> Object {
                const double full = byteOf(data, 0) == 0 ? 25 : 50;
                return samples(self, data, [full](const std::uint8_t* sample) {
                    const auto code = static_cast<double>(sample[0] << 16 | sample[1] << 8 | sample[2]);
                    return roundDecimals(code * full / (1 << 23) - full, 3);
                });
            },
            {"list[float]", "milliamperes on port 0, volts on others, rounded to 3 decimals, one per channel",
             "the device"}};
}

}  // namespace

void defineAnalogInput24(Package& package) {
    const Parameter ports{"ai_dict", "dict[int, list[int]]", "ports of the analog input"};
    const auto readRow = [](Reply reply, int kind) {
        return Request{.name = "AI_readOnDemand",
                       .checks = {checkAIPort(inputPortParameter)},
                       .sends = READAI24BIT,
                       .fields = {inputPortParameter | u8, constant(kind)},
                       .reply = std::move(reply),
                       .doc = "Reads all channels once."};
    };

    Feature streaming(package, "AI24BitStreamingModule", {"Packet", "AIBased"},
                      "Analog inputs of 24 bits with streaming.");
    streaming.constructor(
        {ports,
         {"ai_max_rate", "int", "highest rate of the model in Hz"},
         {"ai_ratio", "float", "volts per count"},
         {"ai_num_channels", "int", "channels of a row"}},
        [](py::handle self, const Object& map, const Object& rate, const Object& ratio, const Object& count) {
            constructInput(self, {map, rate, ratio, count, false, AI_START_STREAMING_24BIT});
        });
    streaming.operation(readRow(twosComplement(), 0));
    defineInputReading(streaming);

    Feature current(package, "AI24BitModule", {"Packet", "AIUnion"}, "Inputs of currents and voltages, on demand.");
    current.constructorFields({{"ai_dict", "dict[int, list[int]]", "ports of the analog input"}});
    defineInputConfiguration(current);
    current.operation(readRow(offsetBinary(), 255));
}

}  // namespace zvr::python
