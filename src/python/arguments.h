// Converts a caller's arguments to the parameters of a body: one checked conversion for all callables. A wrong type is
// a TypeError that names the argument, its type and the expected one.
#pragma once

#include <concepts>
#include <optional>
#include <string>

#include "python/common.h"

namespace zvr::python {

/// A caller's time in seconds; never NaN.
struct Seconds {
    double value;
    operator double() const { return value; }  // NOLINT: a time is a number
};

[[noreturn]] void refuseType(py::handle value, std::string_view name, std::string_view wanted);

/// An integer, by `__index__`; throws an OverflowError outside these limits.
std::int64_t integerArgument(py::handle value, std::string_view name, std::int64_t least, std::uint64_t most);
double realArgument(py::handle value, std::string_view name);
Seconds secondsArgument(py::handle value, std::string_view name);
std::string textArgument(py::handle value, std::string_view name);
bool isTrue(py::handle value);

namespace detail {

/// Whether the object is of a bound type and its constructors have run.
bool isConstructed(py::handle object);
std::string nameOfType(const std::type_info& type);

template <class T>
struct IsShared : std::false_type {};
template <class T>
struct IsShared<std::shared_ptr<T>> : std::true_type {
    using Content = T;
};
template <class T>
struct IsOptional : std::false_type {};
template <class T>
struct IsOptional<std::optional<T>> : std::true_type {
    using Content = T;
};

}  // namespace detail

/// The native part of an object; null if it has none of this type, or its constructor has not run.
template <class T>
std::shared_ptr<T> nativeOrNothing(py::handle object) {
    if (!object) return nullptr;
    // An object of exactly this class needs no search for its type.
    static const py::detail::type_info* const bound = py::detail::get_type_info(typeid(T));
    if (bound != nullptr && Py_TYPE(object.ptr()) == bound->type) {
        const auto held = reinterpret_cast<py::detail::instance*>(object.ptr())->get_value_and_holder(bound);
        return held.holder_constructed() ? held.template holder<std::shared_ptr<T>>() : nullptr;
    }
    if (!py::isinstance<T>(object) || !detail::isConstructed(object)) return nullptr;
    return py::cast<std::shared_ptr<T>>(object);
}

/// The same; throws a TypeError if there is none.
template <class T>
std::shared_ptr<T> native(py::handle object, std::string_view name = "self") {
    auto held = nativeOrNothing<T>(object);
    if (!held) refuseType(object, name, "a constructed " + detail::nameOfType(typeid(T)));
    return held;
}

/// An argument converted to a body's parameter of type `T`.
template <class T>
T argument(py::handle value, std::string_view name) {
    if constexpr (std::is_same_v<T, bool>) {
        return isTrue(value);
    } else if constexpr (std::is_same_v<T, Seconds>) {
        return secondsArgument(value, name);
    } else if constexpr (std::is_same_v<T, std::string>) {
        return textArgument(value, name);
    } else if constexpr (std::floating_point<T>) {
        return static_cast<T>(realArgument(value, name));
    } else if constexpr (std::integral<T>) {
        using Limits = std::numeric_limits<T>;
        constexpr auto least = std::is_signed_v<T> ? static_cast<std::int64_t>(Limits::min()) : 0;
        return static_cast<T>(integerArgument(value, name, least, static_cast<std::uint64_t>(Limits::max())));
    } else if constexpr (detail::IsOptional<T>::value) {
        if (value.is_none()) return std::nullopt;
        return argument<typename detail::IsOptional<T>::Content>(value, name);
    } else {
        static_assert(detail::IsShared<T>::value, "a body takes an Object, a number, text or a native object");
        return native<typename detail::IsShared<T>::Content>(value, name);
    }
}

}  // namespace zvr::python
