#include "core/wire/failures.h"
#include "device/protocol.h"

namespace zvr::python {

namespace {

const Parameter integer{"number", "int", "the bits"};
const Parameter bitIndex{"index", "int", "bit, 0 being the least significant"};
const Parameter byteValues{"int_list", "Sequence[int]", "byte values, most significant first"};

// Defines the pair of functions that convert a `Number` to bytes and back.
template <class Number>
void defineNumber(Package& package, const std::string& kind, const std::string& letters) {
    const std::string width = std::to_string(sizeof(Number));
    const bool isFloat = std::is_floating_point_v<Number>;
    const std::string type = isFloat ? "float" : "int";
    package.function(
        {.name = "convert" + letters + "To" + width + "U8",
         .parameters = {{"value", "float", "the number, " + kind}},
         .doc = "Packs a number of " + kind + ".",
         .returns = {"list[int]", width + " byte values, most significant first"},
         .raises = {"OverflowError: the number does not fit", "TypeError: it is not a number"},
         .body = [](py::handle, const Object& value) -> Object { return toList(pack<Number>(value, "value")); }});
    package.function(
        {.name = "convert" + width + "U8To" + letters,
         .parameters = {byteValues},
         .doc = "Unpacks a number of " + kind + ".",
         .returns = {type, "the number"},
         .raises = {"struct.error: the number of bytes is not " + width},
         .body = [](py::handle, const Object& bytes) { return readBigEndian<Number>(bytesOf(bytes, "int_list")); }});
}

void defineBits(Package& package) {
    const Raises refused{"TypeError: an argument is not an integer",
                         "ValueError, OverflowError: the position is negative, or 65536 or more"};
    package.function(
        {.name = "clearBit",
         .parameters = {integer, bitIndex},
         .doc = "Clears a bit.",
         .returns = {"int", "the number without the bit"},
         .raises = refused,
         .body = [](py::handle, const Object& number, const Object& index) { return clearBit(number, index); }});
    package.function(
        {.name = "readBit",
         .parameters = {integer, bitIndex},
         .doc = "Reads a bit.",
         .returns = {"int", "0 or 1"},
         .raises = {"TypeError: an argument is not an integer", "ValueError: the position is negative"},
         .body = [](py::handle, const Object& number, const Object& index) { return readBit(number, index); }});
    package.function(
        {.name = "fillBit",
         .parameters = {integer, bitIndex},
         .doc = "Sets a bit.",
         .returns = {"int", "the number with the bit"},
         .raises = refused,
         .body = [](py::handle, const Object& number, const Object& index) { return fillBit(number, index); }});
    package.function({.name = "writeBit",
                      .parameters = {integer, bitIndex, {"value", "int", "1 sets the bit, anything else clears it"}},
                      .doc = "Writes a bit.",
                      .returns = {"int", "the changed number"},
                      .raises = refused,
                      .body = [](py::handle, const Object& number, const Object& index, const Object& value) {
                          return writeBit(number, index, value);
                      }});
    package.function({.name = "changeToLatticePort",
                      .parameters = {{"slot", "int", "slot of the chassis, from 1"}},
                      .doc = "Turns a slot into its port.",
                      .returns = {"int", "the port, from 0"},
                      .raises = {"TypeError: it is not a number"},
                      .body = [](py::handle, const Object& slot) -> Object {
                          if (PyNumber_Check(slot.ptr()) == 0) refuseType("slot", "a number", slot);
                          return slot - py::int_(1);
                      }});
}

void defineText(Package& package) {
    package.function(
        {.name = "convertDegToRad",
         .parameters = {{"degrees", "float", "angle in degrees"}},
         .doc = "Turns degrees into radians.",
         .returns = {"float", "angle in radians"},
         .body = [](py::handle, const Object& degrees) { return radiansOf(numberOf<double>(degrees, "degrees")); }});
    package.function(
        {.name = "convertRadToDeg",
         .parameters = {{"radians", "float", "angle in radians"}},
         .doc = "Turns radians into degrees.",
         .returns = {"float", "angle in degrees"},
         .body = [](py::handle, const Object& radians) { return degreesOf(numberOf<double>(radians, "radians")); }});
    package.function(
        {.name = "convertU8ListToStr",
         .parameters = {byteValues},
         .doc = "Decodes UTF-8 text, up to its first zero character.",
         .returns = {"str", "the text"},
         .raises = {"UnicodeDecodeError: the bytes are no UTF-8"},
         .body = [](py::handle, const Object& bytes) -> Object { return textOf(bytesOf(bytes, "int_list")); }});
    package.function({.name = "convertStrToU8List",
                      .parameters = {{"str_", "str", "the text"}},
                      .doc = "Lists the code point of each character.",
                      .returns = {"list[int]", "one number per character, no terminator"},
                      .body = [](py::handle, const Object& text) -> Object { return codePoints(text, "str_"); }});
    package.function(
        {.name = "convertIPAddrTo4U8",
         .parameters = {{"value", "str", "dotted address, \"192.168.1.110\""}},
         .doc = "Splits an IPv4 address.",
         .returns = {"list[int]", "4 byte values, first octet first"},
         .raises = {"OSError: the text is no address"},
         .body = [](py::handle, const Object& address) -> Object { return addressBytes(address, "value"); }});
    package.function({.name = "convertMACAddrTo6U8",
                      .parameters = {{"str_", "str", "hexadecimal numbers with colons between them"}},
                      .doc = "Splits a MAC address.",
                      .returns = {"list[int]", "one number per piece"},
                      .raises = {"ValueError: a piece is no hexadecimal number"},
                      .body = [](py::handle, const Object& address) -> Object { return macBytes(address, "str_"); }});
}

void defineLists(Package& package) {
    const Parameter indices{"index_list", "Iterable[int]", "bit positions"};
    const Parameter mask{"value_int", "int", "the bits"};
    const Raises positionsRefused{"ValueError, OverflowError: a position is negative, or 65536 or more"};
    package.function({.name = "convertIntToBinaryList",
                      .parameters = {mask, {"width", "int", "number of bits to list"}},
                      .doc = "Lists the bits of a number.",
                      .returns = {"list[int]", "`width` items 0 or 1, least significant first"},
                      .raises = {"ValueError, OverflowError: `width` is negative, or above 1000000"},
                      .body = [](py::handle, const Object& number, const Object& width) -> Object {
                          return bitsOf(number, width);
                      }});
    package.function(
        {.name = "convertIndexAndBinaryListsToInt",
         .parameters = {indices, {"binary_list", "Iterable[int]", "one value per position, clipped to 0 or 1"}},
         .doc = "Makes a mask of positions and their values.",
         .returns = {"int", "the mask; the shorter list sets the number of pairs"},
         .body = [](py::handle, const Object& positions, const Object& bits) { return maskOfPairs(positions, bits); }});
    package.function({.name = "convertIndexListToInt",
                      .parameters = {indices},
                      .doc = "Makes a mask of positions.",
                      .returns = {"int", "the mask"},
                      .raises = positionsRefused,
                      .body = [](py::handle, const Object& positions) { return maskOfIndices(positions); }});
    package.function({.name = "convertIntToIndexList",
                      .parameters = {mask},
                      .doc = "Lists the positions of the set bits.",
                      .returns = {"list[int]", "positions, ascending"},
                      .raises = {"ValueError: the number is negative"},
                      .body = [](py::handle, const Object& number) -> Object { return indicesOfMask(number); }});
    package.function({.name = "coerce",
                      .parameters = {{"list_", "Iterable[float]", "the values"},
                                     {"lower", "float", "least value", "0"},
                                     {"upper", "float", "greatest value", "1"}},
                      .doc = "Limits every value to a range.",
                      .returns = {"list", "the limited values"},
                      .body = [](py::handle, const Object& values, const Object& lower, const Object& upper) -> Object {
                          return clipped(values, lower, upper);
                      }});
    package.function(
        {.name = "adjustDataList",
         .parameters = {{"data_list", "Iterable", "the items"},
                        {"list_length", "int", "number of items of the result", "8"},
                        {"padding_num", "object", "value that fills the end", "0"}},
         .doc = "Cuts or fills a list to a length.",
         .returns = {"list", "exactly `list_length` items"},
         .raises = {"ValueError, OverflowError: `list_length` is negative, or above 1000000"},
         .body = [](py::handle, const Object& items, const Object& length, const Object& padding) -> Object {
             py::list result;
             const auto wanted = static_cast<std::size_t>(itemCount(length, "list_length"));
             eachOf(items, "data_list", [&](const Object& item) {
                 if (result.size() < wanted) result.append(item);
                 return result.size() < wanted;
             });
             while (result.size() < wanted) result.append(padding);
             return result;
         }});
}

void defineChecks(Package& package) {
    package.function(
        {.name = "checkInputType",
         .parameters = {{"data", "object", "the value"},
                        {"correct_type", "type | tuple[type, ...]", "the type it must be of, or several"}},
         .doc = "Raises InputTypeNotCorrectError unless the value is of the type.",
         .raises = {"InputTypeNotCorrectError: the value is of another type"},
         .body = [](py::handle, const Object& value, const Object& type) { checkInputType(value, type); }});
    package.function({.name = "checkInputTypeConsistent",
                      .parameters = {{"data", "object", "one value"}, {"data2", "object", "the other one"}},
                      .doc = "Raises InputTypeNotConsistentError unless the values are of one type.",
                      .returns = {"bool", "True"},
                      .raises = {"InputTypeNotConsistentError: the types differ"},
                      .body = [](py::handle, const Object& first, const Object& second) {
                          return checkInputTypeConsistent(first, second);
                      }});
    package.function({.name = "checkEachItemInRange",
                      .parameters = {{"int_list", "Iterable[float]", "the values"},
                                     {"low", "float", "least allowed value", "0"},
                                     {"high", "float", "greatest allowed value", "255"},
                                     {"msg", "str | None", "message of the error; None for its own", "None"}},
                      .doc = "Raises InputDataNotInRangeError unless all values are in the range.",
                      .raises = {"InputDataNotInRangeError: a value is out of range"},
                      .body = [](py::handle, const Object& values, const Object& low, const Object& high,
                                 const Object& message) { checkEachItemInRange(values, low, high, message); }});
    const Parameter pinMap{"pinmap_list", "Sequence[str]", "what each pin of the port is used for"};
    const Parameter allowed{"allow_state_list", "Sequence[str]", "uses that are allowed"};
    package.function({.name = "checkFuncPinMap",
                      .parameters = {{"cell", "Sequence[int]", "port and pin"}, pinMap, allowed},
                      .doc = "Checks whether a pin has an allowed use.",
                      .returns = {"bool", "whether it has"},
                      .body = [](py::handle, const Object& cell, const Object& map, const Object& states) {
                          return checkFuncPinMap(cell, map, states);
                      }});
    package.function(
        {.name = "checkPinMap",
         .parameters = {{"cell_list", "Iterable[Sequence[int]]", "pairs of port and pin"}, pinMap, allowed},
         .doc = "Checks whether all pins have an allowed use.",
         .returns = {"bool", "whether they have"},
         .body = [](py::handle, const Object& cells, const Object& map, const Object& states) {
             return checkPinMap(cells, map, states);
         }});
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
