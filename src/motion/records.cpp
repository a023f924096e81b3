// The records of axes and interpolations, and the texts that settings have in a file.
#include "motion/records.h"

#include "motion/motion.h"

namespace zvr::python {

namespace {

/// The names of a setting's values in a file. Numbers are written unchanged.
struct Texts {
    const char* zero;
    const char* one;
};
constexpr Texts pulses{"Step/Dir(One Pulse)", "CW/CCW(Two Pulse)"}, truth{"FALSE", "TRUE"},
    level{"Active Low", "Active High"}, way{"Forward", "Reverse"}, integer{}, decimal{};

struct Setting {
    const char* key;
    int defaultValue;
    const Texts& texts;
};
const Setting settings[] = {
    {"Stepper Output", 0, pulses},
    {"Inverse Motion Direction", 0, truth},
    {"Inverse Encoder Direction", 0, truth},
    {"Encoder A Polarity", 1, level},
    {"Encoder B Polarity", 1, level},
    {"Encoder Z Polarity", 0, level},
    {"Home Enable", 0, truth},
    {"Forward Enable", 1, truth},
    {"Reverse Enable", 1, truth},
    {"Home Polarity", 0, level},
    {"Forward Polarity", 1, level},
    {"Reverse Polarity", 1, level},
    {"Initial Search Direction", 1, way},
    {"Final Approach Direction", 1, way},
    {"Enable Reset Position", 0, truth},
    {"Approach Velocity Percent", 20, decimal},
    {"Offset Position", 2000, integer},
    {"Servo On Polarity", 1, level},
    {"Alarm Enable", 0, truth},
    {"Alarm Polarity", 0, level},
    {"Inposition Enable", 0, truth},
    {"Inposition Polarity", 0, level},
};

Object defaultSettings() {
    py::dict map;
    for (const auto& [key, defaultValue, texts] : settings) {
        map[key] =
            &texts == &decimal ? Object(py::float_(static_cast<double>(defaultValue))) : Object(py::int_(defaultValue));
    }
    return map;
}

struct RecordField {
    const char* name;
    int defaultValue;
    const char* doc;
};

struct Record {
    const char* name;
    const char* doc;
    std::size_t given;  ///< number of fields that are arguments of the constructor
    std::vector<RecordField> fields;
    bool hasSettings = false;
};

const std::vector<Record>& records() {
    static const std::vector<Record> table = {
        {"MotionAxis",
         "What the host remembers of one motion axis.",
         2,
         {{"acceleration", 100000, "pulses per second squared"},
          {"deceleration", 100000, "pulses per second squared"},
          {"target_position", 0, "where the next move goes, in pulses"},
          {"encoder_position", 0, "what the encoder was set to last, in pulses"},
          {"velocity", 10000, "pulses per second; negative is backwards in continuous moves"},
          {"velocity_move_direction", 0, "way of the last reversal, 1 forward"},
          {"jerk", 1, "change of the acceleration, in the chip's unit"},
          {"search_velocity", 10000, "speed of a reference search, in pulses per second"},
          {"search_accerleration", 100000, "acceleration of a reference search, in pulses per second squared"},
          {"acceleration_mode", 0, "0 trapezoid, 1 or 2 S-curve"},
          {"operation_mode", 0, "0 to a position, 1 by a distance, 2 continuous"},
          {"stop", 0, "1 when a limit stops the axis at once"},
          {"search_type", 0, "kind of reference search, 0 to 2"},
          {"destinate_position", 0, "without effect"},
          {"capture_type", 0, "edge that captures, 0 or 1"},
          {"capture_mode", 0, "position that is captured, 0 or 1"},
          {"breakpoint_mode", 0, "0 at a position, 1 from the present one on"},
          {"breakpoint_polarity", 1, "0 or 1"},
          {"breakpoint_start_position", 0, "pulses"},
          {"breakpoint_pulse_width", 0, "in the chip's unit"},
          {"breakpoint_pulse_period", 0, "in the chip's unit"},
          {"breakpoint_pulse_number", 0, "number of pulses"},
          {"stop_decl", 0, "how the axis was stopped last, 0 with deceleration, 1 at once"}},
         true},
        {"MotionLinearInterpolation",
         "What the host remembers of the last linear interpolation.",
         0,
         {{"main_axis", 0, "lowest axis"},
          {"main_dest", 0, "its destination in pulses"},
          {"second_axis", 1, "second axis"},
          {"second_dest", 1, "its destination in pulses"},
          {"third_axis", 2, "third axis"},
          {"third_dest", 2, "its destination in pulses"},
          {"fourth_axis", 3, "fourth axis"},
          {"fourth_dest", 3, "its destination in pulses"},
          {"speed", 1000, "pulses per second"},
          {"acceleration", 10000, "pulses per second squared"},
          {"deceleration", 10000, "pulses per second squared"},
          {"mode", 2, "number of axes, 2 to 4"}}},
        {"MotionCircularInterpolation",
         "What the host remembers of the last circular interpolation.",
         0,
         {{"main_axis", 0, "lower axis"},
          {"second_axis", 1, "without effect"},
          {"finish_point_x", 2, "pulses"},
          {"finish_point_y", 3, "pulses"},
          {"center_point_x", 0, "pulses"},
          {"center_point_y", 0, "pulses"},
          {"speed", 1000, "pulses per second"},
          {"acceleration", 10000, "pulses per second squared"},
          {"deceleration", 10000, "pulses per second squared"},
          {"direction", 0, "0 clockwise, 1 counter-clockwise"}}},
        {"MotionHelicalInterpolation",
         "What the host remembers of the last helical interpolation.",
         0,
         {{"finish_point_axis1", 0, "pulses"},
          {"finish_point_axis2", 0, "pulses"},
          {"center_point_axis1", 0, "pulses"},
          {"center_point_axis2", 0, "pulses"},
          {"circular_direction", 0, "0 clockwise, 1 counter-clockwise"},
          {"circular_speed", 0, "pulses per second"},
          {"enable_axis3", 1, "1 when the third axis moves along"},
          {"pitch_axis3", 0, "pulses"},
          {"enable_axis4", 0, "1 when the fourth axis moves along"},
          {"pitch_axis4", 0, "pulses"},
          {"rotation_number", 0, "whole turns"},
          {"calculation_result", 0, "what the chip calculated last"}}},
    };
    return table;
}

void construct(const Record& record, py::handle self, Arguments given) {
    for (std::size_t i = 0; i < record.fields.size(); ++i) {
        const auto& [name, value, doc] = record.fields[i];
        setAttribute(self, name, i < record.given ? given[i] : Object(py::int_(value)));
    }
    if (record.hasSettings) setAttribute(self, "motion_dict", defaultSettings());
}

// An object without the record's fields gets the default repr.
Object represent(const Record& record, py::handle self) {
    py::list parts;
    const auto show = [&](const char* name) {
        const Object value = attributeOrNothing(self, name);
        if (value) parts.append(py::str("{}={!r}").format(name, value));
    };
    for (const RecordField& field : record.fields) show(field.name);
    if (record.hasSettings) show("motion_dict");
    if (parts.empty()) return callMethod(pythonObject("builtins", "object"), "__repr__", self);
    return py::str("{}({})").format(attribute(py::type::of(borrow(self.ptr())), "__name__"),
                                    py::str(", ").attr("join")(parts));
}

// The records of the table have static lifetime.
void defineRecord(Package& package, const Record& record) {
    ClassMaker type = package.makeClass(record.name, {}, record.doc);
    Definition constructor{.name = "__init__",
                           .doc = "Sets every field to its default.",
                           .body = [&record](const Definition&, py::handle self, Arguments given) -> Object {
                               construct(record, self, given);
                               return py::none();
                           }};
    for (std::size_t i = 0; i < record.fields.size(); ++i) {
        const auto& [name, value, doc] = record.fields[i];
        type.field({name, "int", doc});
        if (i < record.given) constructor.parameters.push_back({name, "int", doc, std::to_string(value)});
    }
    if (record.hasSettings) type.field({"motion_dict", "dict[str, Any]", "settings by name, which a file keeps"});
    type.method(std::move(constructor))
        .method(
            {.name = "__repr__", .doc = "Lists the fields.", .returns = {"str"}, .body = [&record](py::handle self) {
                 return represent(record, self);
             }});
}

}  // namespace

void defineMotionRecords(Package& package) {
    for (const Record& record : records()) defineRecord(package, record);
    package.makeClass("MotionInifile", {}, "What the values of an axis's settings are called in a file.")
        .field({"ini_out_dict", "dict[str, dict[int, str]]", "text of each value, by setting"})
        .field({"ini_in_dict", "dict[str, dict[str, int]]", "value of each text, by setting"})
        .method({.name = "__init__", .doc = "Makes both maps.", .body = [](py::handle self) {
                     py::dict out, in;
                     for (const auto& [key, defaultValue, texts] : settings) {
                         if (texts.zero == nullptr) continue;
                         py::dict names, values;
                         names[py::int_(0)] = texts.zero;
                         names[py::int_(1)] = texts.one;
                         values[texts.zero] = 0;
                         values[texts.one] = 1;
                         out[key] = names;
                         in[key] = values;
                     }
                     setAttribute(self, "ini_out_dict", out);
                     setAttribute(self, "ini_in_dict", in);
                 }});
}

void constructMotionState(py::handle self) {
    for (const char* axis : {"axis_1", "axis_2", "axis_3", "axis_4"}) {
        setAttribute(self, axis, makeRecord("MotionAxis"));
    }
    setAttribute(self, "linear_interpo", makeRecord("MotionLinearInterpolation"));
    setAttribute(self, "circular_interpo", makeRecord("MotionCircularInterpolation"));
    setAttribute(self, "helical_interpo", makeRecord("MotionHelicalInterpolation"));
    setAttribute(self, "motion_ini", makeRecord("MotionInifile"));
}

}  // namespace zvr::python
