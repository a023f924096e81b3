#include "core/wire/failures.h"
#include "device/protocol.h"

namespace zvr::python {

namespace {

const Parameter integer{"number", "int", "the bits"};
const Parameter bitIndex{"index", "int", "bit, 0 being the least significant"};
const Parameter byteValues{"int_list", "Sequence[int]", "byte values, most significant first"};

// A pair of functions for one number: to bytes and from them. `Number` is what they stand for.
template <class Number>
void defineNumber(Package& package, const std::string& kind, const std::string& letters) {
    const std::string width = std::to_string(sizeof(Number));
    const bool isFloat = std::is_floating_point_v<Number>;
    const std::string type = isFloat ? "float" : "int";
    package.function("convert" + letters + "To" + width + "U8", {{"value", "float", "the number, " + kind}},
                     "Packs a number of " + kind + ".", {"list[int]", width + " byte values, most significant first"},
                     {"OverflowError: the number does not fit", "TypeError: it is no number"},
                     [](py::handle, const Object& value) -> Object { return toList(pack<Number>(value, "value")); });
    package.function("convert" + width + "U8To" + letters, {byteValues}, "Unpacks a number of " + kind + ".",
                     {type, "the number"}, {"struct.error: there are not " + width + " bytes"},
                     [](py::handle, const Object& bytes) { return readBigEndian<Number>(bytesOf(bytes, "int_list")); });
}

void defineBits(Package& package) {
    const Raises refused{"TypeError: an argument is no integer",
                         "ValueError, OverflowError: the position is negative, or 65536 or more"};
    package.function("clearBit", {integer, bitIndex}, "Clears a bit.", {"int", "the number without the bit"}, refused,
                     [](py::handle, const Object& number, const Object& index) { return clearBit(number, index); });
    package.function("readBit", {integer, bitIndex}, "Reads a bit.", {"int", "0 or 1"},
                     {"TypeError: an argument is no integer", "ValueError: the position is negative"},
                     [](py::handle, const Object& number, const Object& index) { return readBit(number, index); });
    package.function("fillBit", {integer, bitIndex}, "Sets a bit.", {"int", "the number with the bit"}, refused,
                     [](py::handle, const Object& number, const Object& index) { return fillBit(number, index); });
    package.function("writeBit", {integer, bitIndex, {"value", "int", "1 sets the bit, anything else clears it"}},
                     "Writes a bit.", {"int", "the changed number"}, refused,
                     [](py::handle, const Object& number, const Object& index, const Object& value) {
                         return writeBit(number, index, value);
                     });
    package.function("changeToLatticePort", {{"slot", "int", "slot of the chassis, from 1"}},
                     "Turns a slot into its port.", {"int", "the port, from 0"}, {"TypeError: it is no number"},
                     [](py::handle, const Object& slot) -> Object {
                         if (PyNumber_Check(slot.ptr()) == 0) refuseType("slot", "a number", slot);
                         return slot - py::int_(1);
                     });
}

void defineText(Package& package) {
    package.function("convertDegToRad", {{"degrees", "float", "angle in degrees"}}, "Turns degrees into radians.",
                     {"float", "angle in radians"}, {},
                     [](py::handle, const Object& degrees) { return radiansOf(numberOf<double>(degrees, "degrees")); });
    package.function("convertRadToDeg", {{"radians", "float", "angle in radians"}}, "Turns radians into degrees.",
                     {"float", "angle in degrees"}, {},
                     [](py::handle, const Object& radians) { return degreesOf(numberOf<double>(radians, "radians")); });
    package.function("convertU8ListToStr", {byteValues}, "Decodes UTF-8 text, up to its first zero character.",
                     {"str", "the text"}, {"UnicodeDecodeError: the bytes are no UTF-8"},
                     [](py::handle, const Object& bytes) -> Object { return textOf(bytesOf(bytes, "int_list")); });
    package.function("convertStrToU8List", {{"str_", "str", "the text"}}, "Lists the code point of each character.",
                     {"list[int]", "one number per character, no terminator"}, {},
                     [](py::handle, const Object& text) -> Object { return codePoints(text, "str_"); });
    package.function("convertIPAddrTo4U8", {{"value", "str", "dotted address, \"192.168.1.110\""}},
                     "Splits an IPv4 address.", {"list[int]", "4 byte values, first octet first"},
                     {"OSError: the text is no address"},
                     [](py::handle, const Object& address) -> Object { return addressBytes(address, "value"); });
    package.function("convertMACAddrTo6U8", {{"str_", "str", "hexadecimal numbers with colons between them"}},
                     "Splits a MAC address.", {"list[int]", "one number per piece"},
                     {"ValueError: a piece is no hexadecimal number"},
                     [](py::handle, const Object& address) -> Object { return macBytes(address, "str_"); });
}

void defineLists(Package& package) {
    const Parameter indices{"index_list", "Iterable[int]", "bit positions"};
    const Parameter mask{"value_int", "int", "the bits"};
    const Raises positionsRefused{"ValueError, OverflowError: a position is negative, or 65536 or more"};
    package.function(
        "convertIntToBinaryList", {mask, {"width", "int", "number of bits to list"}}, "Lists the bits of a number.",
        {"list[int]", "`width` items 0 or 1, least significant first"},
        {"ValueError, OverflowError: `width` is negative, or above 1000000"},
        [](py::handle, const Object& number, const Object& width) -> Object { return bitsOf(number, width); });
    package.function(
        "convertIndexAndBinaryListsToInt",
        {indices, {"binary_list", "Iterable[int]", "one value per position, clipped to 0 or 1"}},
        "Makes a mask of positions and their values.", {"int", "the mask; the shorter list sets the number of pairs"},
        {}, [](py::handle, const Object& positions, const Object& bits) { return maskOfPairs(positions, bits); });
    package.function("convertIndexListToInt", {indices}, "Makes a mask of positions.", {"int", "the mask"},
                     positionsRefused, [](py::handle, const Object& positions) { return maskOfIndices(positions); });
    package.function("convertIntToIndexList", {mask}, "Lists the positions of the set bits.",
                     {"list[int]", "positions, ascending"}, {"ValueError: the number is negative"},
                     [](py::handle, const Object& number) -> Object { return indicesOfMask(number); });
    package.function("coerce",
                     {{"list_", "Iterable[float]", "the values"},
                      {"lower", "float", "least value", "0"},
                      {"upper", "float", "greatest value", "1"}},
                     "Limits every value to a range.", {"list", "the limited values"}, {},
                     [](py::handle, const Object& values, const Object& lower, const Object& upper) -> Object {
                         return clipped(values, lower, upper);
                     });
    package.function("adjustDataList",
                     {{"data_list", "Iterable", "the items"},
                      {"list_length", "int", "number of items of the result", "8"},
                      {"padding_num", "object", "what fills the end", "0"}},
                     "Cuts or fills a list to a length.", {"list", "exactly `list_length` items"},
                     {"ValueError, OverflowError: `list_length` is negative, or above 1000000"},
                     [](py::handle, const Object& items, const Object& length, const Object& padding) -> Object {
                         py::list result;
                         const auto wanted = static_cast<std::size_t>(itemCount(length, "list_length"));
                         eachOf(items, "data_list", [&](const Object& item) {
                             if (result.size() < wanted) result.append(item);
                             return result.size() < wanted;
                         });
                         while (result.size() < wanted) result.append(padding);
                         return result;
                     });
}

void defineChecks(Package& package) {
    package.function("checkInputType",
                     {{"data", "object", "the value"},
                      {"correct_type", "type | tuple[type, ...]", "the type it must be of, or several"}},
                     "Refuses a value of a wrong type.", {}, {"InputTypeNotCorrectError: the value is of another type"},
                     [](py::handle, const Object& value, const Object& type) { checkInputType(value, type); });
    package.function(
        "checkInputTypeConsistent", {{"data", "object", "one value"}, {"data2", "object", "the other one"}},
        "Refuses two values of different types.", {"bool", "True"}, {"InputTypeNotConsistentError: the types differ"},
        [](py::handle, const Object& first, const Object& second) { return checkInputTypeConsistent(first, second); });
    package.function("checkEachItemInRange",
                     {{"int_list", "Iterable[float]", "the values"},
                      {"low", "float", "least allowed value", "0"},
                      {"high", "float", "greatest allowed value", "255"},
                      {"msg", "str | None", "message of the failure; None for its own", "None"}},
                     "Refuses a list with a value out of range.", {},
                     {"InputDataNotInRangeError: a value is out of range"},
                     [](py::handle, const Object& values, const Object& low, const Object& high,
                        const Object& message) { checkEachItemInRange(values, low, high, message); });
    const Parameter pinMap{"pinmap_list", "Sequence[str]", "what each pin of the port is used for"};
    const Parameter allowed{"allow_state_list", "Sequence[str]", "uses that are allowed"};
    package.function("checkFuncPinMap", {{"cell", "Sequence[int]", "port and pin"}, pinMap, allowed},
                     "Tells whether a pin has an allowed use.", {"bool", "whether it has"}, {},
                     [](py::handle, const Object& cell, const Object& map, const Object& states) {
                         return checkFuncPinMap(cell, map, states);
                     });
    package.function("checkPinMap",
                     {{"cell_list", "Iterable[Sequence[int]]", "pairs of port and pin"}, pinMap, allowed},
                     "Tells whether all pins have an allowed use.", {"bool", "whether they have"}, {},
                     [](py::handle, const Object& cells, const Object& map, const Object& states) {
                         return checkPinMap(cells, map, states);
                     });
}

}  // namespace

void defineConversions(Package& package) {
    defineBits(package);
    defineNumber<std::uint16_t>(package, "16 bits, unsigned", "U16");
    defineNumber<std::uint32_t>(package, "32 bits, unsigned", "U32");
    defineNumber<std::uint64_t>(package, "64 bits, unsigned", "U64");
    defineNumber<std::int16_t>(package, "16 bits, signed", "I16");
    defineNumber<std::int32_t>(package, "32 bits, signed", "I32");
    defineNumber<std::int64_t>(package, "64 bits, signed", "I64");
    defineNumber<float>(package, "a 32-bit float", "F32");
    defineNumber<double>(package, "a 64-bit float", "F64");
    defineText(package);
    defineLists(package);
    defineChecks(package);
    rememberChecks(package.module());
}

}  // namespace zvr::python
