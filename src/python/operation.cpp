#include "python/operation.h"

#include <structmember.h>

#include <algorithm>

#include "python/documentation.h"
#include "python/raising.h"

namespace zvr::python {

namespace {

constexpr std::size_t mostParameters = 24;

// The call signature of one form of a definition.
struct Shape {
    const Definition* definition;
    Form form;
    std::vector<Object> names;     // interned; without self, *args and **kwargs
    std::vector<Object> defaults;  // null for none
    std::size_t positional = 0;    // parameters other than *args and **kwargs
    bool restPositional = false;
    bool restNamed = false;

    std::size_t size() const { return positional + (restPositional ? 1 : 0) + (restNamed ? 1 : 0); }

    // The index of a parameter; `positional` if there is none of this name. Nearly all names are interned.
    std::size_t placeOf(py::handle name) const {
        const auto same = std::ranges::find_if(names, [&](const Object& each) { return each.is(name); });
        const auto found = same != names.end()
                               ? same
                               : std::ranges::find_if(names, [&](const Object& each) { return each.equal(name); });
        return static_cast<std::size_t>(found - names.begin());
    }
};

struct OperationObject {
    PyObject_HEAD vectorcallfunc vectorcall;
    Shape* shape;
    PyObject* name;
    PyObject* qualifiedName;
    PyObject* module;
    PyObject* doc;
    PyObject* textSignature;
    PyObject* stub;
    PyObject* exchange;
};

PyTypeObject operationType{};

OperationObject* cast(PyObject* object) { return reinterpret_cast<OperationObject*>(object); }

[[noreturn]] void refuse(const OperationObject* operation, const std::string& why) {
    throw py::type_error(py::cast<std::string>(operation->qualifiedName) + "() " + why);
}

std::string quoted(py::handle name) { return "'" + py::cast<std::string>(name) + "'"; }

// The arguments of a call, one per parameter.
class Bound {
public:
    explicit Bound(std::size_t count) : count_(count) { std::uninitialized_value_construct_n(data(), count_); }
    ~Bound() { std::destroy_n(data(), count_); }
    Bound(const Bound&) = delete;
    Bound& operator=(const Bound&) = delete;

    Object* data() const { return reinterpret_cast<Object*>(memory_); }
    Object& operator[](std::size_t i) const { return data()[i]; }

private:
    const std::size_t count_;
    alignas(Object) mutable std::byte memory_[mostParameters * sizeof(Object)];
};

// Puts the arguments of a call in the order of the parameters.
void bind(const OperationObject* operation, PyObject* const* given, std::size_t count, PyObject* names, Object* bound) {
    const Shape& shape = *operation->shape;
    const std::size_t taken = std::min(count, shape.positional);
    for (std::size_t i = 0; i < taken; ++i) bound[i] = borrow(given[i]);
    if (count > shape.positional && !shape.restPositional) {
        refuse(operation, "takes at most " + std::to_string(shape.positional) + " arguments but " +
                              std::to_string(count) + " were given");
    }
    Object restNamed;
    if (shape.restNamed) restNamed = py::dict();
    const std::size_t named = names != nullptr ? static_cast<std::size_t>(PyTuple_GET_SIZE(names)) : 0;
    for (std::size_t i = 0; i < named; ++i) {
        const py::handle name = PyTuple_GET_ITEM(names, static_cast<Py_ssize_t>(i));
        const std::size_t place = shape.placeOf(name);
        if (place == shape.positional) {
            if (!shape.restNamed) refuse(operation, "got an unexpected keyword argument " + quoted(name));
            restNamed[name] = borrow(given[count + i]);
            continue;
        }
        if (bound[place]) refuse(operation, "got multiple values for argument " + quoted(name));
        bound[place] = borrow(given[count + i]);
    }
    for (std::size_t i = taken; i < shape.positional; ++i) {
        if (!bound[i]) bound[i] = shape.defaults[i];
        if (!bound[i]) refuse(operation, "missing required argument " + quoted(shape.names[i]));
    }
    std::size_t next = shape.positional;
    if (shape.restPositional) {
        py::tuple rest(count - taken);
        for (std::size_t i = taken; i < count; ++i) rest[i - taken] = borrow(given[i]);
        bound[next++] = std::move(rest);
    }
    if (shape.restNamed) bound[next] = std::move(restNamed);
}

// Notes of a refused argument: all the arguments given, and the definition's text for this error.
void noteArguments(const OperationObject* operation, const Failure& failure, const Bound& given) {
    const FailureRow& row = rowOf(failure.id());
    const Shape& shape = *operation->shape;
    if (shape.positional == 0 || (row.hostBase != "TypeError" && row.hostBase != "ValueError")) return;
    py::error_already_set raised;
    std::string text;
    for (std::size_t i = 0; i < shape.positional; ++i) {
        if (!given[i]) continue;
        text += (text.empty() ? "" : ", ") + py::cast<std::string>(shape.names[i]) + "=" + shown(given[i]);
    }
    text = py::cast<std::string>(operation->name) + "(" + text + ")";
    const std::string title = std::string(row.name) + ": ";
    for (const std::string& each : shape.definition->raises) {
        if (each.starts_with(title)) text += ": " + each.substr(title.size());
    }
    addNote(raised.value(), text);
    raised.restore();
}

PyObject* runBody(const OperationObject* operation, py::handle self, const Bound& bound) {
    const Shape& shape = *operation->shape;
    const Definition& definition = *shape.definition;
    if (const auto* body = std::get_if<PlainBody>(&definition.body)) {
        return (*body)(definition, self, bound.data()).release().ptr();
    }
    const auto& body = std::get<CoroutineBody>(definition.body);
    if (shape.form == Form::awaitable) {
        return makeCoroutine(body(definition, Op(self, {}), bound.data()), operation->name, operation->qualifiedName)
            .release()
            .ptr();
    }
    Object timeout = shape.form == Form::blocking ? std::move(bound[shape.positional - 1]) : py::none();
    return body(definition, Op(self, std::move(timeout)), bound.data()).runThrough().release().ptr();
}

PyObject* call(PyObject* callable, PyObject* const* given, std::size_t flaggedCount, PyObject* names) {
    const OperationObject* operation = cast(callable);
    const Shape& shape = *operation->shape;
    auto count = static_cast<std::size_t>(PyVectorcall_NARGS(flaggedCount));
    try {
        py::handle self;
        if (shape.form != Form::function) {
            if (count == 0) refuse(operation, "missing its object");
            self = given[0];
            ++given;
            --count;
        }
        const Bound bound(shape.size());
        bind(operation, given, count, names, bound.data());
        try {
            return runBody(operation, self, bound);
        } catch (const Failure& failure) {
            raiseCurrent();
            noteArguments(operation, failure, bound);
            return nullptr;
        }
    } catch (...) {
        raiseCurrent();
        return nullptr;
    }
}

PyObject* bindTo(PyObject* self, PyObject* object, PyObject* /*type*/) {
    if (object == nullptr || object == Py_None) return Py_NewRef(self);
    return PyMethod_New(self, object);
}

PyObject* represent(PyObject* self) {
    return PyUnicode_FromFormat("<%s %S>", cast(self)->shape->form == Form::function ? "function" : "method",
                                cast(self)->qualifiedName);
}

void deallocate(PyObject* self) {
    OperationObject* operation = cast(self);
    const std::unique_ptr<Shape> shape(operation->shape);
    for (PyObject* field : {operation->name, operation->qualifiedName, operation->module, operation->doc,
                            operation->textSignature, operation->stub, operation->exchange}) {
        Py_XDECREF(field);
    }
    Py_TYPE(self)->tp_free(self);
}

PyMemberDef members[] = {
    {"__name__", T_OBJECT, offsetof(OperationObject, name), READONLY, nullptr},
    {"__qualname__", T_OBJECT, offsetof(OperationObject, qualifiedName), READONLY, nullptr},
    {"__module__", T_OBJECT, offsetof(OperationObject, module), READONLY, nullptr},
    {"__doc__", T_OBJECT, offsetof(OperationObject, doc), READONLY, nullptr},
    {"__text_signature__", T_OBJECT, offsetof(OperationObject, textSignature), READONLY, nullptr},
    {"__stub__", T_OBJECT, offsetof(OperationObject, stub), READONLY, "The line of the type stub."},
    {"__exchange__", T_OBJECT, offsetof(OperationObject, exchange), READONLY,
     "Command, payload and reply of an operation that is one exchange; else None."},
    {nullptr, 0, 0, 0, nullptr},
};

// The marks by which asyncio (until Python 3.11) and inspect (from 3.12 on) know a coroutine function.
PyObject* coroutineMark(PyObject* self, void* place) {
    const auto [module, name] = *static_cast<const std::pair<const char*, const char*>*>(place);
    if (cast(self)->shape->form != Form::awaitable) {
        PyErr_SetString(PyExc_AttributeError, "this is no coroutine function");
        return nullptr;
    }
    try {
        return pythonObject(module, name).release().ptr();
    } catch (...) {
        raiseCurrent();
        return nullptr;
    }
}

std::pair<const char*, const char*> asyncioMark{"asyncio.coroutines", "_is_coroutine"},
    inspectMark{"inspect", "_is_coroutine_mark"};

PyGetSetDef properties[] = {
    {"_is_coroutine", coroutineMark, nullptr, nullptr, &asyncioMark},
    {"_is_coroutine_marker", coroutineMark, nullptr, nullptr, &inspectMark},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

Parameters parametersOf(const Definition& definition, Form form) {
    Parameters parameters = definition.parameters;
    if (form == Form::blocking) parameters.push_back(timeoutParameter());
    return parameters;
}

Shape* makeShape(const Definition& definition, Form form) {
    auto shape = std::make_unique<Shape>();
    shape->form = form;
    for (const Parameter& parameter : parametersOf(definition, form)) {
        if (parameter.name.starts_with("**")) {
            shape->restNamed = true;
        } else if (parameter.name.starts_with('*')) {
            shape->restPositional = true;
        } else {
            shape->names.push_back(own(PyUnicode_InternFromString(parameter.name.c_str())));
            shape->defaults.push_back(parameter.defaultText.empty() ? Object() : literal(parameter.defaultText));
            ++shape->positional;
        }
    }
    if (shape->positional + 2 > mostParameters) throw std::length_error(definition.name + " has too many parameters");
    shape->definition = &definition;
    return shape.release();
}

PyObject* text(const std::string& value) { return py::str(value).release().ptr(); }

}  // namespace

std::string nameIn(const Definition& definition, Form form) {
    if (form == Form::awaitable && !definition.asyncName.empty()) return definition.asyncName;
    const bool isAsync = form == Form::awaitable && !definition.name.starts_with("__");
    return definition.name + (isAsync ? "_async" : "");
}

Object makeOperation(const Definition& definition, Form form, const std::string& owner) {
    const Parameters parameters = parametersOf(definition, form);
    const std::string name = nameIn(definition, form);
    OperationObject* self = PyObject_New(OperationObject, &operationType);
    if (self == nullptr) throw py::error_already_set();
    auto result = py::reinterpret_steal<Object>(reinterpret_cast<PyObject*>(self));
    self->vectorcall = call;
    self->name = self->qualifiedName = self->module = self->doc = self->textSignature = nullptr;
    self->stub = self->exchange = nullptr;
    self->shape = makeShape(definition, form);
    self->name = text(name);
    self->qualifiedName = text(owner.empty() ? name : owner + "." + name);
    self->module = text("pyzvr");
    self->doc = text(docstring(definition, parameters, form));
    self->textSignature = text(textSignature(parameters, form));
    self->stub = text(stubLine(definition, name, parameters, form));
    self->exchange = requestOf(definition).release().ptr();
    return result;
}

bool isOurOperation(py::handle object) { return Py_TYPE(object.ptr()) == &operationType; }

bool hasOwnMethod(py::handle object, const char* name) {
    const Object method = attributeOrNothing(object, name);
    return method && PyMethod_Check(method.ptr()) && isOurOperation(PyMethod_GET_FUNCTION(method.ptr()));
}

void prepareOperationType(py::module_& /*module*/) {
    operationType.tp_name = "pyzvr.operation";
    operationType.tp_doc = "A method or function of the library.";
    operationType.tp_basicsize = sizeof(OperationObject);
    operationType.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_METHOD_DESCRIPTOR | Py_TPFLAGS_HAVE_VECTORCALL;
    operationType.tp_vectorcall_offset = offsetof(OperationObject, vectorcall);
    operationType.tp_call = PyVectorcall_Call;
    operationType.tp_dealloc = deallocate;
    operationType.tp_descr_get = bindTo;
    operationType.tp_repr = represent;
    operationType.tp_members = members;
    operationType.tp_getset = properties;
    Py_SET_REFCNT(&operationType, 1);
    if (PyType_Ready(&operationType) != 0) throw py::error_already_set();
}

}  // namespace zvr::python
