#include "device/feature.h"

namespace zvr::python {

namespace {

std::vector<std::string> basesOf(const char* engine, const std::string& prefix, Feature::Base base) {
    if (base == Feature::Base::none) return {engine};
    return {engine, prefix + "Based"};
}

std::vector<std::string> asyncVariants(const Package& package, std::vector<std::string> bases) {
    for (std::string& base : bases) {
        if (package.has(base + "_async")) base += "_async";
    }
    return bases;
}

}  // namespace

void defineOperations(ClassMaker& type, const std::vector<Request>& requests) {
    for (const Request& request : requests) type.operation(request);
}

Feature::Feature(Package& package, const std::string& prefix, const std::string& doc, Base base)
    : based_(base == Base::own ? std::optional(package.makeClass(prefix + "Based", {},
                                                                 doc + "\n\nShared by both forms of the feature."))
                               : std::nullopt),
      blocking_(package.makeClass(prefix + "Module", basesOf("Packet", prefix, base), doc + "\n\nBlocking form.")),
      async_(package.makeClass(prefix + "Module_async", basesOf("Packet_async", prefix, base),
                               doc + "\n\nAwaitable form.")) {}

Feature::Feature(Package& package, const std::string& name, const std::vector<std::string>& bases,
                 const std::string& doc)
    : blocking_(package.makeClass(name, bases, doc + "\n\nBlocking form.")),
      async_(package.makeClass(name + "_async", asyncVariants(package, bases), doc + "\n\nAwaitable form.")) {}

Feature& Feature::standalone(const Definition& definition) {
    (based_ ? *based_ : blocking_).standalone(definition);
    return *this;
}

Feature& Feature::constructor(Parameters parameters, Body body) {
    return addShared({.name = "__init__",
                      .parameters = std::move(parameters),
                      .doc = "Sets the resources of the model.",
                      .body = std::move(body)},
                     true);
}

Feature& Feature::basedConstructor(Parameters parameters, Body body) {
    return shared({.name = "__init__",
                   .parameters = std::move(parameters),
                   .doc = "Sets the fields that both forms share.",
                   .body = std::move(body)});
}

Feature& Feature::constructorFields(const std::vector<FieldDoc>& fields) {
    Parameters parameters;
    for (const FieldDoc& offered : fields) {
        field(offered);
        parameters.push_back({offered.name, offered.type, offered.doc});
    }
    return constructor(std::move(parameters), [](const Definition& definition, py::handle self, Arguments given) {
        for (std::size_t i = 0; i < definition.parameters.size(); ++i) {
            setAttribute(self, definition.parameters[i].name.c_str(), given[i]);
        }
        return Object(py::none());
    });
}

Feature& Feature::field(const FieldDoc& field) {
    (based_ ? *based_ : blocking_).field(field);
    return *this;
}

Feature& Feature::property(const FieldDoc& field, const Body& get, const Body& set, const std::optional<Body>& erase) {
    for (ClassMaker* form : {&blocking_, &async_}) form->property(field, get, set, erase);
    return *this;
}

Feature& Feature::operations(const std::vector<Request>& requests) {
    for (const Request& request : requests) operation(request);
    return *this;
}

Feature& Feature::Group::operations(std::vector<Request> requests) {
    for (Request& request : requests) {
        request.checks.insert(request.checks.begin(), common_.checks.begin(), common_.checks.end());
        request.fields.insert(request.fields.begin(), common_.fields.begin(), common_.fields.end());
        if (request.adapt == nullptr) request.adapt = common_.adapt;
    }
    return feature_.operations(requests);
}

Feature& Feature::add(const Definition& definition, Form blockingForm) {
    const Definition& kept = *keep(definition);
    blocking_.addKept(kept, blockingForm);
    async_.addKept(kept, Form::awaitable);
    return *this;
}

Feature& Feature::addShared(const Definition& definition, bool intoBoth) {
    const Definition& kept = *keep(definition);
    if (based_ && !intoBoth) {
        based_->addKept(kept, Form::method);
    } else {
        for (ClassMaker* form : {&blocking_, &async_}) form->addKept(kept, Form::method);
    }
    return *this;
}

}  // namespace zvr::python
