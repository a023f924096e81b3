// How the classes of the package are made.
//
// Feature, device and product classes are ordinary Python classes, made by calling `type`, so that subclassing, super()
// and setting attributes work as a Python user expects. Objects with native state are C++ types bound by pybind11;
// their methods are made here too, so that every callable of the package has a signature and a docstring.
#pragma once

#include <optional>

#include "python/documentation.h"
#include "python/operation.h"
#include "python/values.h"

namespace zvr::python {

/// A field of a class: documentation and type stub only; its value is set by the constructors.
struct FieldDoc {
    std::string name;
    std::string type;
    std::string doc;
};

/// A class under construction.
class ClassMaker {
public:
    ClassMaker(py::handle type) : type_(borrow(type.ptr())) {}  // NOLINT: a class is a class

    /// A method with one form.
    ClassMaker& method(Definition definition) { return add(std::move(definition), Form::method); }
    /// A static method. Its body still takes an object, which is null.
    ClassMaker& standalone(Definition definition);
    /// An awaitable operation without a matching blocking form; its name is given without "_async".
    ClassMaker& awaitable(Definition definition) { return add(std::move(definition), Form::awaitable); }
    /// An operation that has the blocking form only.
    ClassMaker& operation(Definition definition) { return add(std::move(definition), Form::blocking); }

    /// A property over the object's C++ state; the body of `set` gets the new value. An access without a body raises.
    ClassMaker& property(const FieldDoc& field, Body get, std::optional<Body> set = {}, std::optional<Body> erase = {});
    /// A plain attribute.
    ClassMaker& field(const FieldDoc& field);

    ClassMaker& add(Definition definition, Form form) { return addKept(*keep(std::move(definition)), form); }
    /// The same for a definition that has been kept already.
    ClassMaker& addKept(const Definition& definition, Form form);

    const Object& type() const { return type_; }

private:
    Object type_;
};

/// The module under construction.
class Package {
public:
    explicit Package(py::module_ module) : module_(std::move(module)) {}

    py::module_& module() { return module_; }
    Object get(const char* name) const { return module_.attr(name); }
    bool has(const std::string& name) const { return py::hasattr(module_, name.c_str()); }
    void constant(const char* name, py::handle value) { module_.attr(name) = value; }
    void constant(const char* name, int value) { constant(name, py::int_(value)); }

    /// An ordinary Python class; `bases` are names of the package or of built-in exceptions.
    ClassMaker makeClass(const std::string& name, const std::vector<std::string>& bases, const std::string& doc);

    /// A free function. Its body still takes an object, which is null.
    void function(Definition definition);

private:
    py::module_ module_;
};

}  // namespace zvr::python
