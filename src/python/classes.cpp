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

ClassMaker& ClassMaker::addProperty(const FieldDoc& field, PlainBody get, PlainBody set) {
    const auto accessor = [&](Parameters parameters, Returns returns, PlainBody body) {
        return makeOperation(std::make_shared<const Definition>(Definition{
                                 field.name, std::move(parameters), field.doc, std::move(returns), {}, body}),
                             Form::method, nameOf(type_));
    };
    const Object getter = accessor({}, {field.type, field.doc}, get);
    const Object setter = set == nullptr ? Object(py::none()) : accessor({{"value", field.type, ""}}, {}, set);
    py::setattr(type_, field.name.c_str(),
                callObject(hostObject("builtins", "property"), getter, setter, py::none(), py::str(field.doc)));
    return *this;
}

ClassMaker& ClassMaker::field(const FieldDoc& field) {
    annotate(type_, field);
    return *this;
}

ClassMaker& ClassMaker::add(Definition definition, Form form) {
    return add(std::make_shared<const Definition>(std::move(definition)), form);
}

ClassMaker& ClassMaker::add(const std::shared_ptr<const Definition>& definition, Form form) {
    rememberRaises(*definition);
    const std::string name = nameIn(*definition, form);
    py::setattr(type_, name.c_str(), makeOperation(definition, form, nameOf(type_)));
    return *this;
}

ClassMaker& ClassMaker::addStandalone(const Definition& definition) {
    rememberRaises(definition);
    const Object function =
        makeOperation(std::make_shared<const Definition>(definition), Form::function, nameOf(type_));
    py::setattr(type_, definition.name.c_str(), callObject(hostObject("builtins", "staticmethod"), function));
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

void Package::addFunction(Definition definition) {
    const std::string name = definition.name;
    rememberRaises(definition);
    py::setattr(module_, name.c_str(),
                makeOperation(std::make_shared<const Definition>(std::move(definition)), Form::function, ""));
}

Feature::Feature(Package& package, const std::string& prefix, const std::string& doc, Base base)
    : based_(base == Base::own ? std::optional(package.makeClass(prefix + "Based", {},
                                                                 doc + "\n\nWhat both forms of the feature share."))
                               : std::nullopt),
      blocking_(package.makeClass(prefix + "Module", basesOf("Packet", prefix, base), doc + "\n\nBlocking form.")),
      twin_(package.makeClass(prefix + "Module_async", basesOf("Packet_async", prefix, base),
                              doc + "\n\nAwaitable form.")) {}

Feature::Feature(Package& package, const std::string& name, const std::vector<std::string>& bases,
                 const std::string& doc)
    : blocking_(package.makeClass(name, bases, doc + "\n\nBlocking form.")),
      twin_(package.makeClass(name + "_async", twinsOf(package, bases), doc + "\n\nAwaitable form.")) {}

std::vector<std::string> Feature::twinsOf(const Package& package, std::vector<std::string> bases) {
    for (std::string& base : bases) {
        if (package.has(base + "_async")) base += "_async";
    }
    return bases;
}

Feature& Feature::offers(const std::vector<FieldDoc>& fields) {
    Parameters parameters;
    for (const FieldDoc& offered : fields) {
        field(offered);
        parameters.push_back({offered.name, offered.type, offered.doc});
    }
    return addShared({"__init__",
                      std::move(parameters),
                      "Takes what the model offers.",
                      {},
                      {},
                      [](const Definition& definition, py::handle self, Arguments given) -> Object {
                          for (std::size_t i = 0; i < definition.parameters.size(); ++i) {
                              setAttribute(self, definition.parameters[i].name.c_str(), given[i]);
                          }
                          return py::none();
                      }},
                     true);
}

Feature& Feature::addShared(Definition definition, bool intoBoth) {
    const auto shared = std::make_shared<const Definition>(std::move(definition));
    if (based_ && !intoBoth) {
        based_->add(shared, Form::method);
    } else {
        for (ClassMaker* form : {&blocking_, &twin_}) form->add(shared, Form::method);
    }
    return *this;
}

std::vector<std::string> Feature::basesOf(const char* engine, const std::string& prefix, Base base) {
    return base == Base::own ? std::vector<std::string>{engine, prefix + "Based"} : std::vector<std::string>{engine};
}

Feature& Feature::add(Definition definition, Form blockingForm) {
    const auto shared = std::make_shared<const Definition>(std::move(definition));
    blocking_.add(shared, blockingForm);
    twin_.add(shared, Form::awaitable);
    return *this;
}

}  // namespace zvr::python
