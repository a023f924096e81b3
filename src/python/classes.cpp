#include "python/classes.h"

namespace zvr::python {

namespace {

Object classOf(Package& package, const std::string& name) {
    const Object own = py::getattr(package.module(), name.c_str(), py::none());
    return own.is_none() ? Object(py::module_::import("builtins").attr(name.c_str())) : own;
}

void annotate(py::handle type, const FieldDoc& field) {
    const Object names = attribute(type, "__dict__");
    if (!names.contains("__annotations__")) setAttribute(type, "__annotations__", py::dict());
    attribute(type, "__annotations__")[py::str(field.name)] = py::str(field.type);
    const auto doc = py::cast<std::string>(attribute(type, "__doc__"));
    const bool first = doc.find("\n\nAttributes:") == std::string::npos;
    setAttribute(type, "__doc__",
                 py::str(doc + (first ? "\n\nAttributes:" : "") + "\n    " + field.name + " (" + field.type +
                         "): " + field.doc + "."));
}

std::string nameOf(py::handle type) { return py::cast<std::string>(attribute(type, "__name__")); }

}  // namespace

ClassMaker& ClassMaker::property(const FieldDoc& field, Body get, std::optional<Body> set, std::optional<Body> erase) {
    const auto accessor = [&](std::optional<Body> body, Parameters parameters, Returns returns) -> Object {
        if (!body) return py::none();
        return makeOperation(*keep({.name = field.name,
                                    .parameters = std::move(parameters),
                                    .doc = field.doc,
                                    .returns = std::move(returns),
                                    .body = *std::move(body)}),
                             Form::method, nameOf(type_));
    };
    const Object getter = accessor(std::move(get), {}, {field.type, field.doc});
    const Object setter = accessor(std::move(set), {{"value", field.type}}, {});
    const Object deleter = accessor(std::move(erase), {}, {});
    py::setattr(type_, field.name.c_str(),
                callObject(pythonObject("builtins", "property"), getter, setter, deleter, py::str(field.doc)));
    return *this;
}

ClassMaker& ClassMaker::field(const FieldDoc& field) {
    annotate(type_, field);
    return *this;
}

ClassMaker& ClassMaker::addKept(const Definition& definition, Form form) {
    py::setattr(type_, nameIn(definition, form).c_str(), makeOperation(definition, form, nameOf(type_)));
    return *this;
}

ClassMaker& ClassMaker::standalone(Definition definition) {
    const Definition& kept = *keep(std::move(definition));
    const Object function = makeOperation(kept, Form::function, nameOf(type_));
    py::setattr(type_, kept.name.c_str(), callObject(pythonObject("builtins", "staticmethod"), function));
    return *this;
}

ClassMaker Package::makeClass(const std::string& name, const std::vector<std::string>& bases, const std::string& doc) {
    py::tuple baseTuple(bases.size());
    for (std::size_t i = 0; i < bases.size(); ++i) baseTuple[i] = classOf(*this, bases[i]);
    py::dict body;
    body["__module__"] = "pyzvr";
    body["__doc__"] = doc;
    const Object type = callObject(borrow(reinterpret_cast<PyObject*>(&PyType_Type)), py::str(name), baseTuple, body);
    py::setattr(module_, name.c_str(), type);
    return type;
}

void Package::function(Definition definition) {
    const Definition& kept = *keep(std::move(definition));
    py::setattr(module_, kept.name.c_str(), makeOperation(kept, Form::function, ""));
}

}  // namespace zvr::python
