// Small records that are made by the million: a C type whose object holds the value itself.
//
// A bound type costs three times as much per object: it looks its type up, keeps a register of all objects, and has
// the value in a place of its own.
#pragma once

#include "python/classes.h"

namespace zvr::python {

/// The class of a record. It makes objects with `Value{}`, which the class's `__init__` then fills.
template <class Value>
class RecordType {
public:
    /// `name` is qualified and must stay; methods, `__init__` among them, are added to what is returned.
    static ClassMaker define(Package& package, const char* name, const char* doc) {
        PyType_Slot slots[] = {{Py_tp_new, reinterpret_cast<void*>(create)},
                               {Py_tp_dealloc, reinterpret_cast<void*>(destroy)},
                               {Py_tp_doc, const_cast<char*>(doc)},
                               {0, nullptr}};
        PyType_Spec spec{name, sizeof(Holder), 0, Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE, slots};
        const Object made = own(PyType_FromSpec(&spec));
        type = reinterpret_cast<PyTypeObject*>(Py_NewRef(made.ptr()));
        package.constant(std::strrchr(name, '.') + 1, made);
        return made;
    }

    static Object make(Value value) {
        Object object = own(create(type, nullptr, nullptr));
        content(object.ptr()) = std::move(value);
        return object;
    }

    static bool is(py::handle object) { return PyObject_TypeCheck(object.ptr(), type) != 0; }

    static Value& of(py::handle object) {
        if (!is(object)) throw py::type_error(std::string("a ") + type->tp_name + " is wanted");
        return content(object.ptr());
    }

private:
    struct Holder {
        PyObject_HEAD Value value;
    };

    static Value& content(PyObject* object) { return reinterpret_cast<Holder*>(object)->value; }

    static PyObject* create(PyTypeObject* wanted, PyObject* /*unused*/, PyObject* /*unused*/) {
        PyObject* const object = wanted->tp_alloc(wanted, 0);
        if (object != nullptr) new (&content(object)) Value{};
        return object;
    }

    static void destroy(PyObject* object) {
        PyTypeObject* const own = Py_TYPE(object);
        content(object).~Value();
        own->tp_free(object);
        Py_DECREF(own);
    }

    static inline PyTypeObject* type = nullptr;  // there for good
};

}  // namespace zvr::python
