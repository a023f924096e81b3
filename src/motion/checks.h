// The checks of the four-axis controller's arguments.
#pragma once

#include "device/devices.h"
#include "device/feature.h"

namespace zvr::python {

inline Definition checkMCX514(const std::string& what, const char* argument, FailureId failure,
                              std::vector<int> accepted) {
    std::string values;
    for (const int value : accepted)
        values += (value == 0 ? "" : value == accepted.back() ? " or " : ", ") + std::to_string(value);
    return accepting("_checkMCX514" + what, {argument, "int", values}, failure, std::move(accepted));
}

inline const Definition checkMCX514StopMode = checkMCX514("StopMode", "mode", FailureId::MotionStopModeError, {0, 1});
inline const Definition checkMCX514SearchType =
    checkMCX514("SearchType", "search_type", FailureId::MotionSearchTypeError, {0, 1, 2});
// Compat 9: the error is that of the type.
inline const Definition checkMCX514SearchDirection =
    checkMCX514("SearchDirection", "direction", FailureId::MotionSearchTypeError, {0, 1});
inline const Definition checkMCX514Enable = checkMCX514("Enable", "status", FailureId::MotionEnableError, {0, 1});
inline const Definition checkMCX514StepperOutput =
    checkMCX514("StepperOutput", "status", FailureId::MotionStepperOutputError, {0, 1});
inline const Definition checkMCX514Direction =
    checkMCX514("Direction", "direction", FailureId::MotionDirectionError, {0, 1});
inline const Definition checkMCX514Polarity = checkMCX514("Polarity", "status", FailureId::MotionPolarityError, {0, 1});
inline const Definition checkMCX514CaptureType =
    checkMCX514("CaptureType", "status", FailureId::MotionCaptureTypeError, {0, 1});
inline const Definition checkMCX514CaptureMode =
    checkMCX514("CaptureMode", "status", FailureId::MotionCaptureModeError, {0, 1});
inline const Definition checkMCX514BreakPointMode =
    checkMCX514("BreakPointMode", "status", FailureId::MotionBreakPointModeError, {0, 1});
inline const Definition checkMCX514OperationMode =
    checkMCX514("OperationMode", "status", FailureId::MotionOperationModeError, {0, 1, 2});
inline const Definition checkMCX514AccelerationMode =
    checkMCX514("AccelerationMode", "status", FailureId::MotionAccelerationModeError, {0, 1, 2});
inline const Definition checkMCX514MotionPort{
    .name = "_checkMCX514MotionPort",
    .parameters = {{"port", "int", "connector as the device counts it"}},
    .doc = "Raises MotionPortNotAvaliable unless the model has the connector.",
    .raises = {"InputTypeNotCorrectError: `port` is not an integer",
               "MotionPortNotAvaliable: the model has no such connector"},
    .body = [](py::handle self, const Object& port) {
        checkIsInt(port, "port");
        const Object here = attribute(self, "motion_dict");
        if (!here.contains(port)) throw notAmong(FailureId::MotionPortNotAvaliable, here);
    }};
inline const Definition checkMCX514Axis{
    .name = "_checkMCX514Axis",
    .parameters = {{"axis", "int", "axis"}, {"mode", "bool", "whether to check the number too", "True"}},
    .doc =
        "Raises InputTypeNotCorrectError unless an int; returns MotionAxisError for an axis outside 0-3 (compatibility "
        "note 10).",
    .returns = {"Any", "the class `MotionAxisError` for an axis other than 0 to 3, else True"},
    .raises = {"InputTypeNotCorrectError: an argument is not an integer"},
    .body = [](py::handle, const Object& axis, const Object& mode) -> Object {
        checkIsInt(axis, "axis");
        // Compat 10: the class is returned.
        if (mode.is(py::bool_(true)) && !isOneOf(axis, {0, 1, 2, 3})) return classNamed("MotionAxisError");
        return py::bool_(true);
    }};
/// Compat 11: no class of the library has it; a subclass must provide it for synchronous starts.
inline const Definition checkMotionAxis{.name = "_checkMotionAxis",
                                        .raises = {"AttributeError: the object has no `_checkMotionAxis`"}};

}  // namespace zvr::python
