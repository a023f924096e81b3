#include "analog/log_fields.h"

#include "python/raising.h"

namespace zvr::python {

namespace {

constexpr const char* keeperName = "_logging";

// Lives in the object's dictionary, holds the current fields, and passes them to the thread when the object dies. The
// garbage collector sees what it holds, since a writer may refer to the logger.
struct Keeper {
    PyObject_HEAD std::shared_ptr<LogThread>* thread;
    std::array<PyObject*, logFieldNames.size()> fields;
};

PyTypeObject keeperType{};

Keeper* keeperOf(PyObject* object) { return reinterpret_cast<Keeper*>(object); }

void finalizeKeeper(PyObject* self) {
    const py::error_scope keepError;
    const std::unique_ptr<std::shared_ptr<LogThread>> thread(std::exchange(keeperOf(self)->thread, nullptr));
    if (!thread) return;
    LogFields left;
    for (std::size_t i = 0; i < left.size(); ++i) {
        if (keeperOf(self)->fields[i] != nullptr) left[i] = shared(keeperOf(self)->fields[i]);
    }
    try {
        (*thread)->inherit(std::move(left));
    } catch (...) {
        reportUnraisable();
    }
}

int traverseKeeper(PyObject* self, visitproc visit, void* arg) {
    for (PyObject* field : keeperOf(self)->fields) Py_VISIT(field);
    return 0;
}

int clearKeeper(PyObject* self) {
    for (PyObject*& field : keeperOf(self)->fields) Py_CLEAR(field);
    return 0;
}

void deallocateKeeper(PyObject* self) {
    if (PyObject_CallFinalizerFromDealloc(self) < 0) return;
    PyObject_GC_UnTrack(self);
    clearKeeper(self);
    PyObject_GC_Del(self);
}

// A descriptor that stores its value in the object's dictionary.
struct Field {
    PyObject_HEAD LogField field;
    const char* name() const { return logFieldNames[static_cast<std::size_t>(field)]; }
};

PyTypeObject fieldType{};

Field* fieldOf(PyObject* object) { return reinterpret_cast<Field*>(object); }

Keeper* keeperIn(py::handle dictionary) {
    PyObject* found = PyDict_GetItemWithError(dictionary.ptr(), interned(keeperName));
    if (found == nullptr && PyErr_Occurred() != nullptr) throw py::error_already_set();
    return found != nullptr && Py_TYPE(found) == &keeperType ? keeperOf(found) : nullptr;
}

void refuse(PyObject* self, PyObject* object) {
    PyErr_Format(PyExc_AttributeError, "'%s' object has no attribute '%s'", Py_TYPE(object)->tp_name,
                 fieldOf(self)->name());
}

PyObject* getField(PyObject* self, PyObject* object, PyObject* /*type*/) {
    if (object == nullptr || object == Py_None) return Py_NewRef(self);
    try {
        const Object dictionary = dictionaryOf(object);
        PyObject* found = PyDict_GetItemWithError(dictionary.ptr(), interned(fieldOf(self)->name()));
        if (found == nullptr && PyErr_Occurred() == nullptr) refuse(self, object);
        return Py_XNewRef(found);
    } catch (...) {
        raiseCurrent();
        return nullptr;
    }
}

// Sets the attribute, or deletes it if `value` is null.
int setField(PyObject* self, PyObject* object, PyObject* value) {
    try {
        const Object dictionary = dictionaryOf(object);
        PyObject* const name = interned(fieldOf(self)->name());
        const int failed =
            value != nullptr ? PyDict_SetItem(dictionary.ptr(), name, value) : PyDict_DelItem(dictionary.ptr(), name);
        if (failed != 0) {
            if (PyErr_ExceptionMatches(PyExc_KeyError) != 0) {
                PyErr_Clear();
                refuse(self, object);
            }
            return -1;
        }
        Keeper* keeper = keeperIn(dictionary);
        if (keeper == nullptr || keeper->thread == nullptr) return 0;
        const std::shared_ptr<LogThread> thread = *keeper->thread;
        PyObject*& known = keeper->fields[static_cast<std::size_t>(fieldOf(self)->field)];
        const auto before = py::reinterpret_steal<Object>(std::exchange(known, Py_XNewRef(value)));
        thread->noteChange(fieldOf(self)->field, before, py::reinterpret_borrow<Object>(value));
        return 0;
    } catch (...) {
        raiseCurrent();
        return -1;
    }
}

void deallocateField(PyObject* self) { Py_TYPE(self)->tp_free(self); }

void prepareTypes() {
    keeperType.tp_name = "pyzvr.log_keeper";
    keeperType.tp_doc = "Keeps the thread of a logger; it ends with its object.";
    keeperType.tp_basicsize = sizeof(Keeper);
    keeperType.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_HAVE_GC;
    keeperType.tp_dealloc = deallocateKeeper;
    keeperType.tp_finalize = finalizeKeeper;
    keeperType.tp_traverse = traverseKeeper;
    keeperType.tp_clear = clearKeeper;
    fieldType.tp_name = "pyzvr.log_field";
    fieldType.tp_doc = "A field of a logger that its thread uses.";
    fieldType.tp_basicsize = sizeof(Field);
    fieldType.tp_flags = Py_TPFLAGS_DEFAULT;
    fieldType.tp_dealloc = deallocateField;
    fieldType.tp_descr_get = getField;
    fieldType.tp_descr_set = setField;
    for (PyTypeObject* type : {&keeperType, &fieldType}) {
        Py_SET_REFCNT(type, 1);
        if (PyType_Ready(type) != 0) throw py::error_already_set();
    }
}

}  // namespace

void defineLogFields(py::handle type) {
    prepareTypes();
    for (std::size_t i = 0; i < logFieldNames.size(); ++i) {
        auto* field = PyObject_New(Field, &fieldType);
        const Object descriptor = own(reinterpret_cast<PyObject*>(field));
        field->field = static_cast<LogField>(i);
        setAttribute(type, logFieldNames[i], descriptor);
    }
}

std::shared_ptr<LogThread> keptLogThread(py::handle self) {
    const Object kept = attributeOrNothing(self, keeperName);
    if (!kept || Py_TYPE(kept.ptr()) != &keeperType || keeperOf(kept.ptr())->thread == nullptr) return nullptr;
    return *keeperOf(kept.ptr())->thread;
}

void keepLogThread(py::handle self, std::shared_ptr<LogThread> thread) {
    auto* keeper = PyObject_GC_New(Keeper, &keeperType);
    const Object kept = own(reinterpret_cast<PyObject*>(keeper));
    keeper->thread = std::make_unique<std::shared_ptr<LogThread>>(std::move(thread)).release();
    keeper->fields = {};
    PyObject_GC_Track(keeper);
    setAttribute(self, keeperName, kept);
}

}  // namespace zvr::python
