// What all types bound from C++ have in common in Python.
#include "device/protocol.h"
#include "device/queue_face.h"

namespace zvr::python {

void refusePickling(py::handle type) {
    ClassMaker(type).method({.name = "__reduce_ex__",
                             .parameters = {{"protocol", "object", ""}},
                             .doc = "Raises TypeError: threads of this process use it.",
                             .returns = {"Any"},
                             .raises = {"TypeError: always"},
                             .body = [](py::handle self, const Object&) -> Object {
                                 throw py::type_error(std::string("a ") + Py_TYPE(self.ptr())->tp_name +
                                                      " cannot be copied or pickled: threads of this process use it. "
                                                      "Make another one instead");
                             }});
}

// A base class's constructor must only get objects that have its native part.
void guardConstructor(const Object& type) {
    const Object fields = attribute(type, "__dict__");
    if (!fields.contains("__init__")) return;
    const Object original = fields[py::str("__init__")];
    const auto guarded = [original, type](const Object& self, const py::args& given, const py::kwargs& named) {
        for (const auto* part : py::detail::all_type_info(Py_TYPE(self.ptr()))) {
            if (reinterpret_cast<PyObject*>(part->type) == type.ptr()) {
                original(self, *given, **named);
                return;
            }
        }
        refuseType(self, "self", std::string("a ") + reinterpret_cast<PyTypeObject*>(type.ptr())->tp_name);
    };
    // The type stub takes the arguments from the docstring of the original.
    const auto doc = py::cast<std::string>(attribute(original, "__doc__"));
    py::setattr(type, "__init__",
                py::cpp_function(guarded, py::is_method(type), py::name("construct"), py::doc(doc.c_str())));
}

// The collector must not meet an object whose parts are being destroyed, which may run any code.
void untrackAndDeallocate(PyObject* self) {
    PyObject_GC_UnTrack(self);
    reinterpret_cast<PyTypeObject*>(py::detail::get_internals().instance_base)->tp_dealloc(self);
}

void completeBoundTypes(Package& package) {
    const auto* const base = reinterpret_cast<PyTypeObject*>(py::detail::get_internals().instance_base);
    for (const auto entry : py::dict(attribute(package.module(), "__dict__"))) {
        if (PyType_Check(entry.second.ptr()) == 0) continue;
        auto* const type = reinterpret_cast<PyTypeObject*>(entry.second.ptr());
        const auto& parts = py::detail::all_type_info(type);
        if (parts.size() != 1 || parts[0]->type != type) continue;
        const bool isCollected = PyType_HasFeature(type, Py_TPFLAGS_HAVE_GC) != 0;
        if (isCollected && type->tp_dealloc == base->tp_dealloc) type->tp_dealloc = untrackAndDeallocate;
        const Object bound = borrow(entry.second.ptr());
        guardConstructor(bound);
        if (!Object(attribute(bound, "__dict__")).contains("__reduce_ex__")) refusePickling(bound);
    }
}

}  // namespace zvr::python
