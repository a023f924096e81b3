// Generates the signature, docstring and stub line of a definition.
#pragma once

#include "python/operation.h"

namespace zvr::python {

/// The last parameter of every blocking operation.
const Parameter& timeoutParameter();

/// The value of a Python literal.
Object literal(const std::string& text);

std::string textSignature(const Parameters& parameters, Form form);
std::string docstring(const Definition& definition, const Parameters& parameters, Form form);
std::string stubLine(const Definition& definition, const std::string& name, const Parameters& parameters, Form form);

/// (command, payload, reply) as texts, or None.
Object requestOf(const Definition& definition);

}  // namespace zvr::python
