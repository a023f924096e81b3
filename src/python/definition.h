// The definition of every callable of the package, written once: the method, its async variant, the signature, the
// docstring, the line of the type stub and the row of the reference page are generated from it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "python/arguments.h"
#include "python/op.h"

namespace zvr::python {

struct Parameter {
    std::string name;              ///< "*args" and "**kwargs" take the remaining arguments
    std::string type = {};         ///< as in the type stub
    std::string doc = {};          ///< unit, range, shape
    std::string defaultText = {};  ///< default value, as a Python literal; empty for none

    Parameter withDefault(std::string literal) const { return {name, type, doc, std::move(literal)}; }
};

using Parameters = std::vector<Parameter>;

struct Returns {
    std::string type = "None";  ///< as in the type stub
    std::string doc = {};       ///< value, unit, shape
    std::string source = {};    ///< origin: the device, a host record, a table
};

struct Definition;
using Arguments = const Object*;  ///< one per parameter, in order

/// What a call raises: "SomeError: when". A definition in the list adds everything that it raises itself.
struct Raises : std::vector<std::string> {
    struct Entry {
        Entry(const char* text) : texts{text} {}                            // NOLINT: an entry is written as a text
        Entry(std::string text) : texts{std::move(text)} {}                 // NOLINT
        Entry(std::vector<std::string> texts) : texts(std::move(texts)) {}  // NOLINT
        Entry(const Definition& definition);                                // NOLINT
        std::vector<std::string> texts;
    };
    Raises() = default;
    Raises(std::initializer_list<Entry> entries) { add(entries); }
    /// Adds entries that are not there yet.
    void add(std::initializer_list<Entry> entries);
};

/// A body that has finished when it returns.
using PlainBody = std::function<Object(const Definition&, py::handle self, Arguments)>;
/// A body that waits for the device; serves both forms.
using CoroutineBody = std::function<Task(const Definition&, Op, Arguments)>;

/// The code of a callable, made from any C++ callable, including captures. If its first parameter is an Op it is a
/// coroutine; otherwise it takes the object, as a py::handle or as its native part. Then follows one argument per
/// parameter, an Object unchanged or any type that `argument` converts to.
struct Body : std::variant<PlainBody, CoroutineBody> {
    Body() = default;
    template <class Function>
    requires(!std::is_same_v<std::remove_cvref_t<Function>, Body>)
        Body(Function function);  // NOLINT: a body is written as a callable
};

/// A request as shown on the wire format page.
struct RequestText {
    std::string command;
    std::string fields;
};

/// A check made before anything is sent: a method of the object, called by name so that a class may override it, or a
/// function that checks one argument.
struct Check {
    std::string method = {};
    void (*test)(py::handle value, const char* name) = nullptr;
    std::vector<std::string> arguments;
    Raises raises;
};

/// The definition of a callable. Definitions live as long as the process, so a coroutine may use the captures of its
/// body.
struct Definition {
    std::string name;
    Parameters parameters = {};
    std::string doc = {};  ///< one line of purpose
    Returns returns = {};
    Raises raises = {};
    Body body = {};
    std::string asyncName = {};  ///< name of the awaitable form if it is not the usual one
    std::optional<RequestText> request = {};

    /// Makes a Check that calls it with these parameters.
    template <class... Checked>
    Check operator()(const Checked&... parameter) const {
        return {name, nullptr, {parameter.name...}, raises};
    }
};

/// Keeps a definition for the life of the process.
const Definition* keep(Definition definition);

namespace detail {

/// An argument unchanged, or converted to the body's parameter.
template <class Wanted>
decltype(auto) convert(const Definition& definition, Arguments arguments, std::size_t index) {
    using Plain = std::remove_cvref_t<Wanted>;
    if constexpr (std::is_same_v<Plain, Object>) {
        return arguments[index];
    } else {
        return argument<Plain>(arguments[index], definition.parameters[index].name);
    }
}

/// The object that a method is called on, or its native part.
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

template <class Function>
struct Signature : Signature<decltype(&Function::operator())> {};
template <class Back, class First, class... Rest>
struct Signature<Back (*)(First, Rest...)> {
    using Returned = Back;
    using Receiver = std::remove_cvref_t<First>;
    static constexpr std::size_t arguments = sizeof...(Rest);

    template <class Function, class Self, std::size_t... index>
    static Back call(const Function& function, [[maybe_unused]] const Definition& definition, Self&& self,
                     [[maybe_unused]] Arguments given, std::index_sequence<index...>) {
        return function(receiver<First>(std::forward<Self>(self)), convert<Rest>(definition, given, index)...);
    }
};
template <class Function, class Back, class... All>
struct Signature<Back (Function::*)(All...) const> : Signature<Back (*)(All...)> {};

template <class Function, class Self>
auto callBody(const Function& function, const Definition& definition, Self&& self, Arguments given) {
    using Called = Signature<Function>;
    return Called::call(function, definition, std::forward<Self>(self), given,
                        std::make_index_sequence<Called::arguments>());
}

template <class Function>
auto bodyOf(Function function) {
    using Called = Signature<Function>;
    if constexpr (std::is_same_v<typename Called::Receiver, Definition>) {
        return function;  // takes the arguments as they are
    } else if constexpr (std::is_same_v<typename Called::Receiver, Op>) {
        return CoroutineBody([function](const Definition& definition, Op op, Arguments given) -> Task {
            return callBody(function, definition, std::move(op), given);
        });
    } else {
        return PlainBody([function](const Definition& definition, py::handle self, Arguments given) -> Object {
            using Returned = typename Called::Returned;
            if constexpr (std::is_void_v<Returned>) {
                callBody(function, definition, self, given);
                return py::none();
            } else if constexpr (std::is_base_of_v<Object, Returned>) {
                return callBody(function, definition, self, given);
            } else {
                return py::cast(callBody(function, definition, self, given));
            }
        });
    }
}

}  // namespace detail

template <class Function>
requires(!std::is_same_v<std::remove_cvref_t<Function>, Body>) Body::Body(Function function)
    : std::variant<PlainBody, CoroutineBody>(detail::bodyOf(std::move(function))) {}

}  // namespace zvr::python
