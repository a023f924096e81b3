#include "models/traits.h"

#include <algorithm>
#include <deque>
#include <string_view>
#include <unordered_map>

#include "core/engine/never_destroyed.h"

namespace zvr::python {

namespace {

/// Rows by the names of classes.
struct Rows {
    std::unordered_map<std::string_view, const Model*> byClass;
    std::deque<Model> ofDevices;  ///< the defaults, with a family

    Rows() {
        for (const Model& row : models()) {
            if (row.listing == Listing::model) byClass[row.name] = &row;
            const char* const device = row.family->device;
            if (device == nullptr || byClass.contains(device)) continue;
            byClass[device] = &ofDevices.emplace_back(Model{.name = device, .family = row.family});
        }
    }
};

const Model& defaults() {
    static const auto& row = neverDestroyed<Model>();
    return row;
}

// The current display name; null if the object or its class has none.
Object displayNameOf(py::handle self) {
    if (!attributeOrNothing(self, "_getDeviceName")) return {};
    try {
        return callMethod(self, "_getDeviceName");
    } catch (const py::error_already_set& error) {
        if (!error.matches(PyExc_KeyError)) throw;
        return {};
    }
}

}  // namespace

const Model& traitsOf(py::handle self) {
    static const auto& rows = neverDestroyed<Rows>();
    const bool isClass = PyType_Check(self.ptr()) != 0;
    auto* const type = isClass ? reinterpret_cast<PyTypeObject*>(self.ptr()) : Py_TYPE(self.ptr());
    PyObject* const bases = type->tp_mro;
    for (Py_ssize_t i = 0; i < PyTuple_GET_SIZE(bases); ++i) {
        const auto found = rows.byClass.find(reinterpret_cast<PyTypeObject*>(PyTuple_GET_ITEM(bases, i))->tp_name);
        if (found != rows.byClass.end()) return *found->second;
    }
    return defaults();
}

const Model& traitsNamed(py::handle displayName) {
    const auto found = std::ranges::find_if(models(), [&](const Model& row) {
        return PyUnicode_Check(displayName.ptr()) != 0 &&
               PyUnicode_CompareWithASCIIString(displayName.ptr(), row.displayName) == 0;
    });
    return found == models().end() ? defaults() : *found;
}

int firstYearOf(py::handle self) {
    const ModelFamily& own = *traitsOf(self).family;
    const Object name = own.nameMark == nullptr ? displayNameOf(self) : Object();
    for (const Model& row : models()) {
        const ModelFamily& other = *row.family;
        if (name && other.nameMark != nullptr && name.contains(other.nameMark)) return other.firstYear;
    }
    return own.firstYear;
}

Object devicePort(py::handle self, const Object& port) {
    return traitsOf(self).countsSlots ? port - py::int_(1) : port;
}

void adaptPort(py::handle self, std::vector<Object>& arguments) { arguments[0] = devicePort(self, arguments[0]); }

}  // namespace zvr::python
