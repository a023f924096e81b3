#include "python/values.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/failures.h"

namespace zvr::python {

Bytes bytesOf(py::handle sequence) {
    if (PyLong_Check(sequence.ptr()) || PyUnicode_Check(sequence.ptr())) {
        throw py::type_error(std::string("a sequence of byte values is wanted, not ") +
                             Py_TYPE(sequence.ptr())->tp_name);
    }
    const Object bytes = own(PyBytes_FromObject(sequence.ptr()));
    const auto* data = reinterpret_cast<const std::uint8_t*>(PyBytes_AS_STRING(bytes.ptr()));
    return {data, data + PyBytes_GET_SIZE(bytes.ptr())};
}

py::bytes toBytes(ByteView bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

py::list toList(ByteView bytes) {
    py::list list(bytes.size());
    for (std::size_t i = 0; i < bytes.size(); ++i) list[i] = py::int_(bytes[i]);
    return list;
}

namespace {

Object integerOf(py::handle value) {
    if (PyIndex_Check(value.ptr()) != 0) return own(PyNumber_Index(value.ptr()));
    if (PyNumber_Check(value.ptr()) == 0) {
        throw py::type_error(std::string("a number is wanted, not ") + Py_TYPE(value.ptr())->tp_name);
    }
    return own(PyNumber_Long(value.ptr()));
}

template <class Wide, class Number>
Number narrowed(Wide wide, bool failed) {
    if (failed && PyErr_Occurred() != nullptr) throw py::error_already_set();
    if (wide < std::numeric_limits<Number>::min() || wide > std::numeric_limits<Number>::max()) {
        throw std::overflow_error("the number " + std::to_string(wide) + " does not fit " +
                                  std::to_string(8 * sizeof(Number)) + " bits");
    }
    return static_cast<Number>(wide);
}

}  // namespace

template <class Number>
Number numberOf(py::handle value) {
    if constexpr (std::is_floating_point_v<Number>) {
        const double wide = PyFloat_AsDouble(value.ptr());
        if (wide == -1.0 && PyErr_Occurred() != nullptr) throw py::error_already_set();
        const auto narrow = static_cast<Number>(wide);
        if (std::isinf(narrow) && !std::isinf(wide)) throw std::overflow_error("the number does not fit 32 bits");
        return narrow;
    } else if constexpr (std::is_same_v<Number, std::uint64_t>) {
        const unsigned long long wide = PyLong_AsUnsignedLongLong(integerOf(value).ptr());
        return narrowed<unsigned long long, Number>(wide, wide == static_cast<unsigned long long>(-1));
    } else {
        const long long wide = PyLong_AsLongLong(integerOf(value).ptr());
        return narrowed<long long, Number>(wide, wide == -1);
    }
}

template std::uint16_t numberOf(py::handle);
template std::uint32_t numberOf(py::handle);
template std::uint64_t numberOf(py::handle);
template std::int16_t numberOf(py::handle);
template std::int32_t numberOf(py::handle);
template std::int64_t numberOf(py::handle);
template float numberOf(py::handle);
template double numberOf(py::handle);

py::str textOf(ByteView bytes) {
    const Object text = own(PyUnicode_DecodeUTF8(reinterpret_cast<const char*>(bytes.data()),
                                                 static_cast<Py_ssize_t>(bytes.size()), "strict"));
    const Py_ssize_t length = PyUnicode_GET_LENGTH(text.ptr());
    const Py_ssize_t zero = PyUnicode_FindChar(text.ptr(), 0, 0, length, 1);
    return py::reinterpret_steal<py::str>(own(PyUnicode_Substring(text.ptr(), 0, zero < 0 ? length : zero)).release());
}

py::list codePoints(py::handle text) {
    py::list codes;
    for (const py::handle character : text) codes.append(hostObject("builtins", "ord")(character));
    return codes;
}

py::list addressBytes(py::handle address) { return {hostObject("socket", "inet_aton")(address)}; }

py::list macBytes(py::handle address) {
    py::list bytes;
    for (const py::handle piece : callMethod(address, "split", py::str(":"))) {
        bytes.append(hostObject("builtins", "int")(piece, 16));
    }
    return bytes;
}

namespace {

// A short list of bytes is the format's own failure.
py::str formatted(const std::string& format, ByteView bytes) {
    return py::str(format).format(*py::tuple(toList(bytes)));
}

}  // namespace

py::str addressText(ByteView bytes) { return formatted("{:d}.{:d}.{:d}.{:d}", bytes); }

py::str macText(ByteView bytes, const char* digits) {
    std::string format;
    for (int i = 0; i < 6; ++i) format += std::string(i == 0 ? "{:" : ":{:") + digits + "}";
    return formatted(format, bytes);
}

Object readBit(const Object& number, const Object& index) { return (number >> index) & py::int_(1); }

Object writeBit(const Object& number, const Object& index, const Object& value) {
    const Object bit = py::int_(1) << index;
    return value.equal(py::int_(1)) ? number | bit : number & ~bit;
}

py::list bitsOf(py::handle number, py::handle width) {
    const auto count = py::cast<Py_ssize_t>(width);
    py::list bits;
    Object left = borrow(number.ptr());
    const py::int_ one(1);
    for (Py_ssize_t i = 0; i < count; ++i) {
        bits.append(left & one);
        left = left >> one;
    }
    return bits;
}

Object maskOfIndices(py::handle indices) {
    const py::int_ one(1);
    Object mask = py::int_(0);
    for (const py::handle index : indices) mask = mask | (one << borrow(index.ptr()));
    return mask;
}

py::list indicesOfMask(py::handle mask) {
    py::list indices;
    const Object number = integerOf(mask);
    const auto width = py::cast<Py_ssize_t>(callMethod(number, "bit_length"));
    if (number < py::int_(0)) throw py::value_error("a mask is not negative");
    for (Py_ssize_t i = 0; i < width; ++i) {
        if (py::cast<int>((number >> py::int_(i)) & py::int_(1)) != 0) indices.append(i);
    }
    return indices;
}

Object maskOfPairs(py::handle indices, py::handle bits) {
    Object mask = py::int_(0);
    const py::list values = clipped(bits, py::int_(0), py::int_(1));
    std::size_t i = 0;
    for (const py::handle index : indices) {
        if (i == values.size()) break;
        mask = mask | (Object(values[i++]) << borrow(index.ptr()));
    }
    return mask;
}

py::list clipped(py::handle values, py::handle lower, py::handle upper) {
    py::list result;
    for (const py::handle value : values) {
        const Object item = borrow(value.ptr());
        result.append(item < lower ? borrow(lower.ptr()) : item > upper ? borrow(upper.ptr()) : item);
    }
    return result;
}

namespace {

bool isOfType(py::handle value, py::handle type) {
    if (PyAnySet_Check(type.ptr()) || PyList_Check(type.ptr())) {
        return isOfType(value, py::tuple(borrow(type.ptr())));
    }
    const int result = PyObject_IsInstance(value.ptr(), type.ptr());
    if (result < 0) throw py::error_already_set();
    return result != 0;
}

void require(bool isRight) {
    if (!isRight) throw Failure(FailureId::InputTypeNotCorrectError);
}

}  // namespace

void checkInputType(py::handle value, py::handle type) { require(isOfType(value, type)); }
void checkIsInt(py::handle value) { require(PyLong_Check(value.ptr())); }
void checkIsNumber(py::handle value) { require(PyLong_Check(value.ptr()) || PyFloat_Check(value.ptr())); }
void checkIsIntOrList(py::handle value) { require(PyLong_Check(value.ptr()) || PyList_Check(value.ptr())); }
void checkIsText(py::handle value) { require(PyUnicode_Check(value.ptr())); }
void checkIsTextOrList(py::handle value) { require(PyUnicode_Check(value.ptr()) || PyList_Check(value.ptr())); }

bool isOneOf(py::handle value, std::initializer_list<int> numbers) {
    return std::ranges::any_of(numbers, [&](int number) { return value.equal(py::int_(number)); });
}

bool checkInputTypeConsistent(py::handle first, py::handle second) {
    if (Py_TYPE(first.ptr()) != Py_TYPE(second.ptr())) throw Failure(FailureId::InputTypeNotConsistentError);
    return true;
}

bool checkFuncPinMap(py::handle cell, py::handle pinMap, py::handle allowed) {
    const Object pin = own(PySequence_GetItem(cell.ptr(), 1));
    const Object state = own(PyObject_GetItem(pinMap.ptr(), pin.ptr()));
    const int contained = PySequence_Contains(allowed.ptr(), state.ptr());
    if (contained < 0) throw py::error_already_set();
    return contained != 0;
}

bool checkPinMap(py::handle cells, py::handle pinMap, py::handle allowed) {
    for (const py::handle cell : cells) {
        if (!checkFuncPinMap(cell, pinMap, allowed)) return false;
    }
    return true;
}

}  // namespace zvr::python
