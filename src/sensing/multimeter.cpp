// The record of the 61E+ handheld multimeter, with Python's decimal numbers.
#include "sensing/sensing.h"

namespace zvr::python {

namespace {

constexpr std::size_t recordBytes = 14;  // that are used

// Some names appear more than once: the meter's dial has several positions for them.
constexpr std::array modes = {"ACV",   "ACmV",  "DCV",   "DCmV",  "Hz",   "%",      "OHM",   "CONT",
                              "DIDOE", "CAP",   "deg C", "deg F", "DCuA", "ACuA",   "DCmA",  "ACmA",
                              "DCA",   "ACA",   "HFE",   "Live",  "NCV",  "LozV",   "ACA",   "DCA",
                              "LPF",   "AC/DC", "LPF",   "AC+DC", "LPF",  "AC+DC2", "INRUSH"};

// The display's texts for overload, and for non-contact voltage detection.
constexpr std::array overloads = {".OL", "O.L", "OL.", "OL", "-.OL", "-O.L", "-OL.", "-OL"};
constexpr std::array fieldStrengths = {"EF", "-", "--", "---", "----", "-----"};

struct UnitRow {
    std::vector<const char*> modes;
    std::vector<std::pair<const char*, const char*>> units;  ///< characters of the range, and their unit
};

py::dict unitTable() {
    const std::vector<UnitRow> rows = {
        {{"%"}, {{"0", "%"}}},
        {{"AC+DC", "AC+DC2", "ACA", "DCA"}, {{"1", "A"}}},
        {{"AC/DC", "ACV", "DCV", "LPF", "LozV"}, {{"0123", "V"}}},
        {{"ACmA", "DCmA"}, {{"01", "mA"}}},
        {{"ACmV", "DCmV"}, {{"0", "mV"}}},
        {{"ACuA", "DCuA"}, {{"01", "uA"}}},
        {{"CAP"}, {{"01", "nF"}, {"234", "uF"}, {"567", "mF"}}},
        {{"CONT"}, {{"0", "Ω"}}},
        {{"DIDOE"}, {{"0", "V"}}},
        {{"Hz"}, {{"01", "Hz"}, {"234", "kHz"}, {"567", "MHz"}}},
        {{"OHM"}, {{"0", "Ω"}, {"123", "kΩ"}, {"456", "MΩ"}}},
        {{"deg C"}, {{"01", "deg C"}}},
        {{"deg F"}, {{"01", "deg F"}}},
        {{"HFE"}, {{"0", "B"}}},
        {{"NCV"}, {{"0", "NCV"}}},
    };
    py::dict table;
    for (const UnitRow& row : rows) {
        for (const char* mode : row.modes) {
            py::dict units;
            for (const auto& [ranges, unit] : row.units) {
                for (const char range : std::string_view(ranges)) units[py::str(std::string(1, range))] = unit;
            }
            table[mode] = units;
        }
    }
    return table;
}

template <class Names>
py::list listOf(const Names& names) {
    py::list list;
    for (const char* name : names) list.append(name);
    return list;
}

Object decimal(const Object& number) { return callObject(pythonObject("decimal", "Decimal"), number); }

Object itemOr(py::handle map, const Object& key, const Object& defaultValue) {
    return callMethod(map, "get", key, defaultValue);
}

Object ascii(ByteView bytes) { return callMethod(toBytes(bytes), "decode", py::str("ascii")); }

void decode(py::handle self, const Object& record) {
    const Bytes bytes = bytesOf(record, "b");
    if (bytes.size() < recordBytes) {
        throw py::index_error("a record has " + std::to_string(recordBytes) + " bytes or more, not " +
                              std::to_string(bytes.size()));
    }
    const py::list known = attribute(self, "_MODE");
    if (bytes[0] >= known.size()) throw py::index_error("no mode has the number " + std::to_string(bytes[0]));
    const Object mode = known[bytes[0]], range = ascii(slice(bytes, 1, 1));
    const Object display = callMethod(ascii(slice(bytes, 2, 7)), "replace", py::str(" "), py::str(""));
    const bool overload = attribute(self, "_OVERLOAD").contains(display);
    const py::list strengths = attribute(self, "_NCV");
    const bool isStrength = strengths.contains(display);
    const Object shown = overload     ? Object(py::str("Overflow"))
                         : isStrength ? decimal(callMethod(strengths, "index", display))
                                      : decimal(display);
    const Object shownUnit = itemOr(itemOr(attribute(self, "_UNITS"), mode, py::dict()), range, py::none());
    Object value = shown, unit = shownUnit;
    if (!unit.is_none() && !overload) {
        const Object exponent = itemOr(attribute(self, "_EXPONENTS"), unit[py::int_(0)], py::none());
        if (!exponent.is_none()) {
            value = callMethod(shown, "rotate", exponent);  // Compat 33
            unit = unit[py::slice(1, std::nullopt, std::nullopt)];
        }
    }
    const auto bit = [&](std::size_t place, int mask) { return py::bool_((bytes[place] & mask) != 0); };
    py::dict data;
    data["binary"] = record;
    data["mode"] = mode;
    data["range"] = range;
    data["display"] = display;
    data["overload"] = py::bool_(overload);
    data["ncv"] = py::bool_(isStrength);
    data["display_decimal"] = shown;
    data["display_unit"] = shownUnit;
    data["decimal"] = value;
    data["unit"] = unit;
    data["progres"] = bytes[9] * 10 + bytes[10];
    data["max"] = bit(11, 8);
    data["min"] = bit(11, 4);
    data["hold"] = bit(11, 2);
    data["rel"] = bit(11, 1);
    data["auto"] = py::bool_((bytes[12] & 4) == 0);
    data["battery"] = bit(12, 2);
    data["hvwarning"] = bit(12, 1);
    data["dc"] = bit(13, 8);
    data["peak_max"] = bit(13, 4);
    data["peak_min"] = bit(13, 2);
    data["bar_pol"] = bit(13, 1);
    setAttribute(self, "_data", data);
}

/// A read-only accessor: its name, its key in `_data`, and its label if different from the name.
struct Accessor {
    const char* name;
    const char* key;
    const char* type;
    const char* doc;
    const char* label = nullptr;
};

// In the order of the text form, which leaves out the first.
constexpr Accessor accessors[] = {
    {"binary", "binary", "bytes", "the whole record"},
    {"mode", "mode", "str", "what is measured, a name of `_MODE`"},
    {"range", "range", "str", "range, one character"},
    {"display", "display", "str", "text of the display without blanks"},
    {"display_decimal", "display_decimal", "Decimal | str", "number of the display; \"Overflow\" beyond the range"},
    {"display_unit", "display_unit", "str | None", "unit of the display; None where mode and range have none"},
    {"overload", "overload", "bool", "whether the display shows that the range is exceeded"},
    {"value", "decimal", "Decimal | str",
     "number without its prefix: its 28 digits rotated by the prefix's exponent (compatibility note "
     "33); \"Overflow\" beyond the range"},
    {"unit", "unit", "str | None", "unit without its prefix"},
    {"progress", "progres", "int", "length of the bar"},
    {"isMax", "max", "bool", "whether the greatest value is shown"},
    {"isMin", "min", "bool", "whether the least value is shown", "ismin"},
    {"isHold", "hold", "bool", "whether the display is held"},
    {"isRel", "rel", "bool", "whether the value is relative to another one"},
    {"isAuto", "auto", "bool", "whether the meter chooses its range"},
    {"hasBatteryWarning", "battery", "bool", "whether the battery is low"},
    {"hasHVWarning", "hvwarning", "bool", "whether the voltage is dangerous"},
    {"isDC", "dc", "bool", "whether it is a direct voltage or current"},
    {"isMaxPeak", "peak_max", "bool", "whether the greatest peak is shown"},
    {"isMinPeak", "peak_min", "bool", "whether the least peak is shown"},
    {"isBarPol", "bar_pol", "bool", "polarity of the bar"},
};

std::string textForm(py::handle self) {
    std::string text;
    for (const Accessor& each : accessors) {
        if (&each == accessors) continue;
        text += (text.empty() ? "" : "\n") + std::string(each.label != nullptr ? each.label : each.name) + "=" +
                py::cast<std::string>(py::str(attribute(self, each.name)));
    }
    return text;
}

}  // namespace

void defineMultimeter(Package& package) {
    ClassMaker type = package.makeClass("Measurement", {}, "A record of the 61E+ handheld multimeter, decoded.");
    const auto table = [&](const FieldDoc& field, const Object& value) {
        type.field(field);
        py::setattr(type.type(), field.name.c_str(), value);
    };
    py::dict exponents;
    for (const auto& [prefix, exponent] : {std::pair{"M", 6}, {"k", 3}, {"m", -3}, {"u", -6}, {"n", -9}}) {
        exponents[prefix] = exponent;
    }
    table({"_MODE", "list[str]", "names of the modes, by number"}, listOf(modes));
    table({"_UNITS", "dict[str, dict[str, str]]", "units by mode and range"}, unitTable());
    table({"_EXPONENTS", "dict[str, int]", "exponents of ten of the prefixes"}, exponents);
    table({"_OVERLOAD", "list[str]", "displays beyond the range"}, listOf(overloads));
    table({"_NCV", "list[str]", "displays of field strengths, from none on"}, listOf(fieldStrengths));
    type.field({"_data", "dict[str, Any]", "all values of the record, by the device's names"})
        .method({.name = "__init__",
                 .parameters = {{"b", "bytes", "the record, 14 bytes or more"}},
                 .doc = "Decodes a record.",
                 .raises = {"IndexError: the record is too short, or its mode is unknown",
                            "UnicodeDecodeError: range or display is no ASCII text",
                            "decimal.InvalidOperation: the display shows no number"},
                 .body = decode})
        .method({.name = "__str__",
                 .doc = "All values of the record.",
                 .returns = {"str", "one name and value a line"},
                 .body = textForm});
    for (const Accessor& each : accessors) {
        type.property({each.name, each.type, each.doc},
                      [key = each.key](py::handle self) -> Object { return attribute(self, "_data")[key]; });
    }
}

}  // namespace zvr::python
