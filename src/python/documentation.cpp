#include "python/documentation.h"

#include <algorithm>
#include <map>

#include "core/engine/immortal.h"
#include "python/exchange.h"

namespace zvr::python {

namespace {

std::map<std::string, Raises>& knownRaises() {
    static auto& raises = immortal<std::map<std::string, Raises>>();
    return raises;
}

void collectRaises(const Raises& raises, Raises& collected) {
    for (const std::string& entry : raises) {
        if (entry.starts_with('@')) {
            const auto known = knownRaises().find(entry.substr(1));
            if (known == knownRaises().end()) throw std::logic_error(entry.substr(1) + " is not defined before");
            collectRaises(known->second, collected);
        } else if (std::ranges::find(collected, entry) == collected.end()) {
            collected.push_back(entry);
        }
    }
}

std::string firstLine(const Parameters& parameters, Form form, bool typed) {
    std::string text = form == Form::function ? "(" : "(self";
    for (const Parameter& parameter : parameters) {
        if (text.back() != '(') text += ", ";
        text += parameter.name;
        if (typed && !parameter.type.empty()) text += ": " + parameter.type;
        if (!parameter.standard.empty()) text += (typed ? " = " : "=") + parameter.standard;
    }
    return text + ")";
}

void section(std::string& doc, const char* title, const std::vector<std::string>& lines) {
    if (lines.empty()) return;
    doc += std::string("\n\n") + title + ":";
    for (const std::string& line : lines) doc += "\n    " + line;
}

}  // namespace

const Parameter& timeoutParameter() {
    static const Parameter timeout{"timeout", "float", "seconds in which the device must answer, above 0", "3"};
    return timeout;
}

Object literal(const std::string& text) { return hostObject("ast", "literal_eval")(text); }

void rememberRaises(const Definition& definition) { knownRaises()[definition.name] = definition.raises; }

std::string textSignature(const Parameters& parameters, Form form) { return firstLine(parameters, form, false); }

std::string docstring(const Definition& definition, const Parameters& parameters, Form form) {
    std::string doc = definition.summary;
    std::vector<std::string> lines;
    for (const Parameter& parameter : parameters) {
        if (parameter.doc.empty()) continue;
        const std::string type = parameter.type.empty() ? "" : " (" + parameter.type + ")";
        lines.push_back(parameter.name + type + ": " + parameter.doc + ".");
    }
    section(doc, "Args", lines);
    lines.clear();
    if (!definition.returns.doc.empty()) lines.push_back(definition.returns.type + ": " + definition.returns.doc + ".");
    if (!definition.returns.source.empty()) lines.push_back("Source: " + definition.returns.source + ".");
    section(doc, "Returns", lines);
    Raises raises;
    collectRaises(definition.raises, raises);
    if (form == Form::blocking) raises.push_back("ReceivePacketTimeoutError: the device did not answer in time");
    if (form == Form::awaitable && std::holds_alternative<StepsBody>(definition.body)) {
        raises.push_back("asyncio.TimeoutError: the device did not answer in time");
    }
    for (std::string& entry : raises) entry += ".";
    section(doc, "Raises", raises);
    return doc;
}

std::string stubLine(const Definition& definition, const std::string& name, const Parameters& parameters, Form form) {
    const std::string start = form == Form::awaitable ? "async def " : "def ";
    return start + name + firstLine(parameters, form, true) + " -> " + definition.returns.type + ": ...";
}

Object exchangeOf(const Definition& definition) {
    if (!definition.exchange) return py::none();
    return py::make_tuple(definition.exchange->commandName(), definition.exchange->payloadText(),
                          definition.returns.doc);
}

}  // namespace zvr::python
