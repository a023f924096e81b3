#include "python/common.h"

#include <atomic>
#include <map>
#include <unordered_map>

#include "core/immortal.h"

namespace zvr::python {

namespace {

std::atomic<bool> leaving{false};
unsigned long mainThread = 0;

struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
};
using Names = std::unordered_map<std::string, PyObject*, TextHash, std::equal_to<>>;

PyObject* internedWith(Names& names, std::string_view name, const char* ending) {
    const auto known = names.find(name);
    if (known != names.end()) return known->second;
    PyObject* const made = PyUnicode_InternFromString((std::string(name) + ending).c_str());
    if (made == nullptr) throw py::error_already_set();
    return names.emplace(name, made).first->second;
}

}  // namespace

PyObject* interned(const char* name) {
    static auto& names = immortal<Names>();
    return internedWith(names, name, "");
}

PyObject* internedTwin(const char* name) {
    static auto& names = immortal<Names>();
    return internedWith(names, name, "_async");
}

Object attributeOrNothing(py::handle object, const char* name) {
    PyObject* found = PyObject_GetAttr(object.ptr(), interned(name));
    if (found == nullptr) {
        if (!PyErr_ExceptionMatches(PyExc_AttributeError)) throw py::error_already_set();
        PyErr_Clear();
    }
    return py::reinterpret_steal<Object>(found);
}

py::handle hostObject(const char* module, const char* name) {
    static auto& objects = immortal<std::map<std::pair<const char*, const char*>, Object>>();
    Object& entry = objects[{module, name}];
    entry = py::module_::import(module).attr(name);
    return entry;
}

void rememberMainThread() {
    mainThread = py::module_::import("threading").attr("main_thread")().attr("ident").cast<unsigned long>();
}

Attend attendSignals() {
    if (PyThread_get_thread_ident() != mainThread) return {};
    return [] {
        const py::gil_scoped_acquire acquired;
        if (PyErr_CheckSignals() != 0) throw py::error_already_set();
    };
}

bool interpreterAlive() { return !leaving && Py_IsInitialized() != 0; }

void leaveInterpreter() { leaving = true; }

}  // namespace zvr::python
