// The host-side state of motion. The records are ordinary Python objects.
#pragma once

#include "device/devices.h"
#include "device/feature.h"

namespace zvr::python {

inline Object makeRecord(const char* type) { return callObject(classNamed(type)); }

/// A setting of an axis: an entry of its `motion_dict`.
inline Object settingOf(py::handle axisRecord, const char* key) {
    return own(PyObject_GetItem(attribute(axisRecord, "motion_dict").ptr(), interned(key)));
}
inline void setSetting(py::handle axisRecord, const char* key, py::handle value) {
    const Object settings = attribute(axisRecord, "motion_dict");
    if (PyObject_SetItem(settings.ptr(), interned(key), value.ptr()) != 0) throw py::error_already_set();
}

/// The host-side state of a four-axis controller.
void constructMotionState(py::handle self);

inline void setFields(py::handle record, std::initializer_list<std::pair<const char*, Object>> fields) {
    for (const auto& [name, value] : fields) setAttribute(record, name, value);
}

inline bool isZero(const Object& value) { return value.equal(py::int_(0)); }
inline bool isOne(const Object& value) { return value.equal(py::int_(1)); }

// Common parameters.
inline Parameter integer(const char* name, const char* doc) { return {name, "int", doc}; }
inline Parameter onOff(const char* name) { return integer(name, "1 on, 0 off"); }
inline Parameter level(const char* name) { return integer(name, "1 active high, 0 active low"); }
inline Parameter inverse(const char* name) { return integer(name, "1 inverse, 0 not"); }

/// Opening, saving and loading of settings, for a controller of four axes and for a drive of one.
void defineControllerFiles(Feature& controller);
void defineDriveFiles(Feature& drive);

/// The merged status of several commands: their maximum and 0, so a refusal, which is negative, is lost.
class WorstStatus {
public:
    void take(const Object& status) {
        if (status > value_) value_ = status;
    }
    const Object& value() const { return value_; }

private:
    Object value_ = py::int_(0);
};
const Returns mergedStatus{"int",
                           "0, or the greatest status; a refusal of one step does not show (compatibility note 28)",
                           "the device's statuses of all steps"};

}  // namespace zvr::python
