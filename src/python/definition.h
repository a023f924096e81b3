// What is written once of every callable of the package. The method, its awaitable twin, the signature, the docstring,
// the line of the type stub and the row of the reference page all come from here.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "python/arguments.h"
#include "python/op.h"

namespace zvr::python {

struct Parameter {
    std::string name;           ///< "*args" and "**kwargs" take what is left over
    std::string type;           ///< as in the type stub
    std::string doc;            ///< unit, range, shape
    std::string standard = {};  ///< default, as a Python literal; empty if there is none

    Parameter withDefault(std::string literal) const { return {name, type, doc, std::move(literal)}; }
};

using Parameters = std::vector<Parameter>;

struct Returns {
    std::string type = "None";  ///< as in the type stub
    std::string doc = {};       ///< value, unit, shape
    std::string source = {};    ///< where it comes from: the device, a host record, a table
};

/// Entries are "SomeError: when", or "@_checkX" for all that `_checkX` raises.
using Raises = std::vector<std::string>;

struct Definition;
using Arguments = const Object*;  ///< one per parameter, in order

/// A body that is done when it returns.
using PlainBody = Object (*)(const Definition&, py::handle self, Arguments);
/// A body that waits for the device; serves both forms.
using StepsBody = Result (*)(const Definition&, Op, Arguments);

struct Exchange;

struct Definition {
    std::string name;
    Parameters parameters;
    std::string summary;
    Returns returns;
    Raises raises;
    std::variant<PlainBody, StepsBody> body;
    std::shared_ptr<const Exchange> exchange = {};  ///< of an operation that is one exchange
    std::string twin = {};                          ///< name of the awaitable form where it is not the usual one
    std::size_t tag = 0;                            ///< tells a body that serves many definitions which one it is
};

namespace detail {

template <class Method>
struct Signature;
template <class Function, class Back, class First, class... Rest>
struct Signature<Back (Function::*)(First, Rest...) const> {
    using Returned = Back;
    static constexpr std::size_t arguments = sizeof...(Rest);
};

template <class Function>
using SignatureOf = Signature<decltype(&Function::operator())>;

/// An argument as it was given, or as the body's parameter wants it.
template <class Wanted>
decltype(auto) convert(const Definition& definition, Arguments arguments, std::size_t index) {
    using Plain = std::remove_cvref_t<Wanted>;
    if constexpr (std::is_same_v<Plain, Object>) {
        return arguments[index];
    } else {
        return argument<Plain>(arguments[index], definition.parameters[index].name);
    }
}

/// The object that a method is called on: as it is, or its native part.
template <class Wanted, class First>
decltype(auto) receiver(First&& first) {
    using Plain = std::remove_cvref_t<Wanted>;
    if constexpr (std::is_same_v<Plain, std::remove_cvref_t<First>>) {
        return std::forward<First>(first);
    } else if constexpr (IsShared<Plain>::value) {
        return native<typename IsShared<Plain>::Content>(first);
    } else {
        return (*native<Plain>(first));
    }
}

template <class Function, class First, class Back, class Self, class... Rest, std::size_t... index>
Back spread([[maybe_unused]] const Definition& definition, First&& first, [[maybe_unused]] Arguments arguments,
            Back (Function::*)(Self, Rest...) const, std::index_sequence<index...>) {
    return Function{}(receiver<Self>(std::forward<First>(first)), convert<Rest>(definition, arguments, index)...);
}

template <class Function, class First>
auto spread(const Definition& definition, First&& first, Arguments arguments) {
    return spread<Function>(definition, std::forward<First>(first), arguments, &Function::operator(),
                            std::make_index_sequence<SignatureOf<Function>::arguments>());
}

}  // namespace detail

/// A function as a body, where a lambda would only forward to it.
template <auto function>
struct Calls;
template <class Back, class First, class... Rest, Back (*function)(First, Rest...)>
struct Calls<function> {
    Back operator()(First first, Rest... rest) const { return function(std::forward<First>(first), rest...); }
};

/// A body from a lambda without captures that takes the object, as a py::handle or as the native part that it wants of
/// it, and one argument per parameter: an Object as it was given, or what `argument` makes of it.
template <class Function>
PlainBody plain(Function) {
    return [](const Definition& definition, py::handle self, Arguments arguments) -> Object {
        using Returned = typename detail::SignatureOf<Function>::Returned;
        if constexpr (std::is_void_v<Returned>) {
            detail::spread<Function>(definition, self, arguments);
            return py::none();
        } else if constexpr (std::is_base_of_v<Object, Returned>) {
            return detail::spread<Function>(definition, self, arguments);
        } else {
            return py::cast(detail::spread<Function>(definition, self, arguments));
        }
    };
}

/// The same from a coroutine lambda that takes an Op.
template <class Function>
StepsBody steps(Function) {
    return [](const Definition& definition, Op op, Arguments arguments) -> Result {
        return detail::spread<Function>(definition, std::move(op), arguments);
    };
}

}  // namespace zvr::python
