// Makes the classes of a feature: XModule with the blocking forms, XModule_async with the awaitable ones.
#pragma once

#include "device/exchange.h"
#include "python/classes.h"

namespace zvr::python {

/// Operations of a class that has the blocking form only.
void defineOperations(ClassMaker& type, const std::vector<Request>& requests);

/// The classes of a feature: XModule, XModule_async, and for most XBased with the shared members.
class Feature {
public:
    enum class Base { own, none };
    Feature(Package& package, const std::string& prefix, const std::string& doc, Base base = Base::own);
    /// A pair of classes with the given names and bases; a base without an async variant is a base of both. Shared
    /// members go into both.
    Feature(Package& package, const std::string& name, const std::vector<std::string>& bases, const std::string& doc);

    /// A check or helper that both forms share.
    Feature& shared(const Definition& definition) { return addShared(definition, false); }
    /// A check that needs no object.
    Feature& standalone(const Definition& definition);

    /// A constructor that does more than keep its arguments.
    Feature& constructor(Parameters parameters, Body body);
    /// A constructor of the shared base.
    Feature& basedConstructor(Parameters parameters, Body body);
    /// What a model passes to the module: fields of the object and, in this order, parameters of both constructors.
    Feature& constructorFields(const std::vector<FieldDoc>& fields);

    Feature& field(const FieldDoc& field);
    /// A property over the object's C++ state, in both forms.
    Feature& property(const FieldDoc& field, const Body& get, const Body& set, const std::optional<Body>& erase = {});

    /// An operation, in both forms.
    Feature& operation(const Definition& definition) { return add(definition, Form::blocking); }
    Feature& operations(const std::vector<Request>& requests);

    /// Requests with common checks, fields or argument mapping.
    class Group {
    public:
        Group(Feature& feature, Common common) : feature_(feature), common_(std::move(common)) {}
        Feature& operations(std::vector<Request> requests);

    private:
        Feature& feature_;
        Common common_;
    };
    Group sharing(Common common) { return {*this, std::move(common)}; }

    /// The same for an operation whose blocking form takes no timeout.
    Feature& withoutTimeout(const Definition& definition) { return add(definition, Form::method); }

private:
    Feature& add(const Definition& definition, Form blockingForm);
    Feature& addShared(const Definition& definition, bool intoBoth);

    std::optional<ClassMaker> based_;
    ClassMaker blocking_, async_;
};

}  // namespace zvr::python
