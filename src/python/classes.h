// How the classes of the package are made.
//
// Feature, device and product classes are ordinary Python classes, made by calling `type`, so that subclassing, super()
// and setting attributes work as a Python user expects. Records with a life of their own are C++ types bound by
// pybind11; their methods are made here too, so that each callable of the package has a signature and a docstring.
#pragma once

#include "python/documentation.h"
#include "python/exchange.h"

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
    template <class Function>
    ClassMaker& method(std::string name, Parameters parameters, std::string summary, Returns returns, Raises raises,
                       Function body) {
        return add({std::move(name), std::move(parameters), std::move(summary), std::move(returns), std::move(raises),
                    plain(body)},
                   Form::method);
    }

    /// A function that belongs to the class but needs no object; its lambda takes one all the same, which is nothing.
    template <class Function>
    ClassMaker& standalone(std::string name, Parameters parameters, std::string summary, Returns returns, Raises raises,
                           Function body) {
        return addStandalone({std::move(name), std::move(parameters), std::move(summary), std::move(returns),
                              std::move(raises), plain(body)});
    }

    /// An awaitable operation without a blocking form of the same shape; `name` is without its ending.
    template <class Function>
    ClassMaker& awaitable(std::string name, Parameters parameters, std::string summary, Returns returns, Raises raises,
                          Function body) {
        return add({std::move(name), std::move(parameters), std::move(summary), std::move(returns), std::move(raises),
                    steps(body)},
                   Form::awaitable);
    }

    /// An operation with steps that has the blocking form only.
    template <class Function>
    ClassMaker& operation(std::string name, Parameters parameters, std::string summary, Returns returns, Raises raises,
                          Function body) {
        return add({std::move(name), std::move(parameters), std::move(summary), std::move(returns), std::move(raises),
                    steps(body)},
                   Form::blocking);
    }
    /// The same for operations that are one exchange.
    ClassMaker& rows(std::vector<Row> rows) {
        for (Row& row : rows) add(defineExchange(std::move(row)), Form::blocking);
        return *this;
    }

    /// A property over the object's C++ state, from lambdas (py::handle self) and (py::handle self, Object value).
    template <class Get>
    ClassMaker& property(const FieldDoc& field, Get get) {
        return addProperty(field, plain(get), nullptr);
    }
    template <class Get, class Set>
    ClassMaker& property(const FieldDoc& field, Get get, Set set) {
        return addProperty(field, plain(get), plain(set));
    }
    /// A plain attribute.
    ClassMaker& field(const FieldDoc& field);

    ClassMaker& add(Definition definition, Form form);
    ClassMaker& add(const std::shared_ptr<const Definition>& definition, Form form);

    const Object& type() const { return type_; }

private:
    ClassMaker& addStandalone(const Definition& definition);
    ClassMaker& addProperty(const FieldDoc& field, PlainBody get, PlainBody set);

    Object type_;
};

/// The module, and what its folders put into it.
class Package {
public:
    explicit Package(py::module_ module) : module_(std::move(module)) {}

    py::module_& module() { return module_; }
    Object get(const char* name) const { return module_.attr(name); }
    bool has(const std::string& name) const { return py::hasattr(module_, name.c_str()); }
    void constant(const char* name, py::handle value) { module_.attr(name) = value; }
    void constant(const char* name, int value) { constant(name, py::int_(value)); }

    /// An ordinary Python class; `bases` are names of the package, or of host exceptions.
    ClassMaker makeClass(const std::string& name, const std::vector<std::string>& bases, const std::string& doc);

    /// A free function.
    template <class Function>
    void function(std::string name, Parameters parameters, std::string summary, Returns returns, Raises raises,
                  Function body) {
        addFunction({std::move(name), std::move(parameters), std::move(summary), std::move(returns), std::move(raises),
                     plain(body)});
    }

private:
    void addFunction(Definition definition);

    py::module_ module_;
};

/// The classes of a feature: XModule, XModule_async, and for most XBased with what both forms share.
class Feature {
public:
    enum class Base { own, none };
    Feature(Package& package, const std::string& prefix, const std::string& doc, Base base = Base::own);
    /// A pair of classes with names and bases of its own; a base without a twin is a base of both. What both forms
    /// share goes into both.
    Feature(Package& package, const std::string& name, const std::vector<std::string>& bases, const std::string& doc);

    /// A check or helper that both forms share.
    template <class Function>
    Feature& shared(std::string name, Parameters parameters, std::string summary, Returns returns, Raises raises,
                    Function body) {
        return addShared({std::move(name), std::move(parameters), std::move(summary), std::move(returns),
                          std::move(raises), plain(body)});
    }

    /// A check that needs no object.
    template <class Function>
    Feature& standalone(std::string name, Parameters parameters, std::string summary, Returns returns, Raises raises,
                        Function body) {
        (based_ ? *based_ : blocking_)
            .standalone(std::move(name), std::move(parameters), std::move(summary), std::move(returns),
                        std::move(raises), body);
        return *this;
    }

    /// A constructor that does more than to keep what it is given.
    template <class Function>
    Feature& constructor(Parameters parameters, Function body) {
        return addShared({"__init__", std::move(parameters), "Takes what the model offers.", {}, {}, plain(body)},
                         true);
    }

    /// A constructor of what both forms share.
    template <class Function>
    Feature& basedConstructor(Parameters parameters, Function body) {
        return addShared(
            {"__init__", std::move(parameters), "Sets the fields that both forms share.", {}, {}, plain(body)});
    }

    /// What a model tells the module: fields of the object, and in this order the parameters of both constructors.
    Feature& offers(const std::vector<FieldDoc>& fields);

    Feature& field(const FieldDoc& field) {
        (based_ ? *based_ : blocking_).field(field);
        return *this;
    }

    /// A property over the object's C++ state, in both forms.
    template <class Get, class Set>
    Feature& property(const FieldDoc& field, Get get, Set set) {
        for (ClassMaker* form : {&blocking_, &twin_}) form->property(field, get, set);
        return *this;
    }

    /// An operation with steps, in both forms.
    template <class Function>
    Feature& operation(std::string name, Parameters parameters, std::string summary, Returns returns, Raises raises,
                       Function body) {
        return add({std::move(name), std::move(parameters), std::move(summary), std::move(returns), std::move(raises),
                    steps(body)});
    }

    /// An operation that is one exchange, in both forms.
    Feature& row(Row row) { return add(defineExchange(std::move(row))); }
    Feature& rows(std::vector<Row> rows) {
        for (Row& row : rows) this->row(std::move(row));
        return *this;
    }

    /// The same for an operation whose blocking form takes no timeout.
    template <class Function>
    Feature& untimed(std::string name, Parameters parameters, std::string summary, Returns returns, Raises raises,
                     Function body) {
        return add({std::move(name), std::move(parameters), std::move(summary), std::move(returns), std::move(raises),
                    steps(body)},
                   Form::method);
    }

    Feature& add(Definition definition, Form blockingForm = Form::blocking);

private:
    Feature& addShared(Definition definition, bool intoBoth = false);

    static std::vector<std::string> twinsOf(const Package& package, std::vector<std::string> bases);
    static std::vector<std::string> basesOf(const char* engine, const std::string& prefix, Base base);

    std::optional<ClassMaker> based_;
    ClassMaker blocking_, twin_;
};

}  // namespace zvr::python
