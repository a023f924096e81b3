#include "python/documentation.h"

namespace zvr::python {

namespace {

std::string firstLine(const Parameters& parameters, Form form, bool typed) {
    std::string text = form == Form::function ? "(" : "(self";
    for (const Parameter& parameter : parameters) {
        if (text.back() != '(') text += ", ";
        text += parameter.name;
        if (typed && !parameter.type.empty()) text += ": " + parameter.type;
        if (!parameter.defaultText.empty()) text += (typed ? " = " : "=") + parameter.defaultText;
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

Object literal(const std::string& text) { return pythonObject("ast", "literal_eval")(text); }

std::string textSignature(const Parameters& parameters, Form form) { return firstLine(parameters, form, false); }

std::string docstring(const Definition& definition, const Parameters& parameters, Form form) {
    std::string doc = definition.doc;
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
    std::vector<std::string> raises = definition.raises;
    if (form == Form::blocking) raises.push_back("ReceivePacketTimeoutError: the device did not answer in time");
    if (form == Form::awaitable && std::holds_alternative<CoroutineBody>(definition.body)) {
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

Object requestOf(const Definition& definition) {
    if (!definition.request) return py::none();
    return py::make_tuple(definition.request->command, definition.request->fields, definition.returns.doc);
}

}  // namespace zvr::python
