// Settings of axes in a text file: written and read by Python's INI parser.
#include <span>

#include "motion/records.h"

namespace zvr::python {

namespace {

struct Section {
    const char* name;
    const char* record;  ///< field of the axis
};
constexpr Section fourAxes[] = {{"Axis_1", "axis_1"}, {"Axis_2", "axis_2"}, {"Axis_3", "axis_3"}, {"Axis_4", "axis_4"}};
constexpr Section oneAxis[] = {{"Axis_1", "axis"}};
using Sections = std::span<const Section>;

bool isPercent(const Object& key) { return key.equal(py::str("Approach Velocity Percent")); }
bool isOffset(const Object& key) { return key.equal(py::str("Offset Position")); }

Object lookedUp(py::handle self, const char* map, const Object& key, const Object& value) {
    const Object row = own(PyObject_GetItem(attribute(attribute(self, "motion_ini"), map).ptr(), key.ptr()));
    return own(PyObject_GetItem(row.ptr(), value.ptr()));
}

Object toText(py::handle self, const Object& key, const Object& value) {
    return isPercent(key) || isOffset(key) ? value : lookedUp(self, "ini_out_dict", key, value);
}

Object toValue(py::handle self, const Object& key, const Object& text) {
    if (isPercent(key)) return callObject(py::handle(reinterpret_cast<PyObject*>(&PyFloat_Type)), text);
    if (isOffset(key)) return callObject(py::handle(reinterpret_cast<PyObject*>(&PyLong_Type)), text);
    return lookedUp(self, "ini_in_dict", key, text);
}

Task openFile(Op op, Object name) {
    const bool isPath = PyUnicode_Check(name.ptr()) != 0 || attributeOrNothing(name, "__fspath__");
    const Object path = isPath ? callObject(pythonObject("os", "fspath"), name) : name;
    if (PyUnicode_Check(path.ptr()) == 0) refuseType("filename", "a name as text", name);
    if (!truthOf(callObject(pythonObject("os.path", "isfile"), name))) {
        throw Failure(FailureId::IniFileNotFoundError);
    }
    if (!truthOf(callMethod(path, "endswith", py::str(".ini")))) {
        throw Failure(FailureId::IniFileExtensionNameError);
    }
    setAttribute(op.self(), "inifile", name);
    setAttribute(op.self(), "inimode", py::str("w"));
    setAttribute(op.self(), "iniconfig", callObject(pythonObject("configparser", "ConfigParser")));
    co_return py::int_(0);
}

Task saveFile(Op op, Sections sections) {
    const Object config = attribute(op.self(), "iniconfig");
    for (const auto& [name, record] : sections) {
        config[py::str(name)] = py::dict();
        const Object section = config[py::str(name)];
        for (const py::handle item : callMethod(attribute(attribute(op.self(), record), "motion_dict"), "items")) {
            const py::tuple pair = borrow(item.ptr());
            section[pair[0]] = py::str(op.call("_Motion_INI_convertIntToString", pair[0], pair[1]));
        }
    }
    // Values that cannot be written as text fail before the file is changed.
    const Object text = callObject(pythonObject("io", "StringIO"));
    callMethod(config, "write", text);
    const Object content = callMethod(text, "getvalue");
    const Object file =
        callObject(pythonObject("builtins", "open"), attribute(op.self(), "inifile"), attribute(op.self(), "inimode"));
    thenAlways([&] { callMethod(file, "write", content); }, [&] { callMethod(file, "close"); });
    co_return py::int_(0);
}

Task loadFile(Op op, Sections sections) {
    const Object config = attribute(op.self(), "iniconfig");
    callMethod(config, "read", attribute(op.self(), "inifile"));
    for (const auto& [name, record] : sections) {
        const Object settings = attribute(attribute(op.self(), record), "motion_dict");
        for (const py::handle each : py::list(settings)) {
            const Object key = borrow(each.ptr());
            const Object text = callMethod(config, "get", py::str(name), key);
            settings[key] =
                op.call("_Motion_INI_convertStringToInt", key, callMethod(text, "replace", py::str("\""), py::str("")));
        }
    }
    const py::int_ port(0);
    if (sections.size() == 1) co_return co_await op.request("_Motion_sendAllConfiguration", port);
    for (std::size_t i = 0; i < sections.size(); ++i) {
        const Object status = co_await op.request("_Motion_sendAllConfiguration", port, py::int_(i));
        if (!isZero(status)) co_return status;
    }
    co_return py::int_(0);
}

void defineFiles(Feature& feature, Sections sections) {
    const Parameter key{"key", "str", "name of a setting"};
    const Returns done{"int", "0"};
    const char* unopened = "AttributeError: no file is opened";
    feature.field({"inifile", "str", "name of the opened settings file"})
        .field({"inimode", "str", "mode that it is saved in"})
        .field({"iniconfig", "Any", "the parser, with the sections in memory"})
        .shared({.name = "_Motion_INI_convertIntToString",
                 .parameters = {key, {"value", "Any", "value of the setting"}},
                 .doc = "Value of a setting as it stands in a file.",
                 .returns = {"Any", "its text; the two numbers come as they are"},
                 .raises = {"KeyError: the setting, or a text for the value, is not known"},
                 .body = toText})
        .shared({.name = "_Motion_INI_convertStringToInt",
                 .parameters = {key, {"label", "str", "text in the file"}},
                 .doc = "Value of a setting from its text.",
                 .returns = {"Any", "the value"},
                 .raises = {"KeyError: the setting or the text is not known", "ValueError: the text is not a number"},
                 .body = toValue})
        .withoutTimeout({.name = "Motion_openCfgFile",
                         .parameters = {{"filename", "str", "name of a file that exists", "\"test.ini\""}},
                         .doc = "Chooses the settings file.",
                         .returns = done,
                         .raises = {"IniFileNotFoundError: there is no such file",
                                    "IniFileExtensionNameError: its name does not end in \".ini\""},
                         .body = openFile})
        .withoutTimeout(
            {.name = "Motion_saveCfgFile",
             .doc = "Saves the settings of all axes to the opened file itself: its links and its owner stay.",
             .returns = done,
             .raises = {unopened, "KeyError: a setting has a value without a text; the file is as it was then",
                        "OSError: the file is refused, or the disk takes no more"},
             .body = [sections](Op op) { return saveFile(std::move(op), sections); }})
        .operation({.name = "Motion_loadCfgFile",
                    .doc = "Loads the settings of all axes from the opened file, and sends them to connector 0 "
                           "(compatibility note 26).",
                    .returns = {"int", "0, or the first status of an axis other than that", "the device"},
                    .raises = {unopened, "configparser.Error: the file is malformed, or lacks a section or a setting",
                               "KeyError: a text is not known", "ValueError: a text is not a number"},
                    .body = [sections](Op op) { return loadFile(std::move(op), sections); }});
}

}  // namespace

void defineControllerFiles(Feature& controller) { defineFiles(controller, fourAxes); }
void defineDriveFiles(Feature& drive) { defineFiles(drive, oneAxis); }

}  // namespace zvr::python
