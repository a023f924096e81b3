#include "python/values.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <ranges>

#include "core/wire/failures.h"
#include "python/raising.h"

namespace zvr::python {

namespace {

std::string named(const char* name, const std::string& text) {
    return name == nullptr ? text : std::string(name) + ": " + text;
}

// The bytes of a buffer whose items are single bytes; empty for any other.
std::optional<Bytes> plainBuffer(PyObject* object) {
    if (PyMemoryView_Check(object) == 0) return std::nullopt;
    const Py_buffer& view = *PyMemoryView_GET_BUFFER(object);
    const std::string_view format = view.format == nullptr ? "B" : view.format;
    if (view.itemsize != 1 || view.ndim != 1 || (format != "B" && format != "c")) return std::nullopt;
    const Object bytes = own(PyBytes_FromObject(object));
    const auto* data = reinterpret_cast<const std::uint8_t*>(PyBytes_AS_STRING(bytes.ptr()));
    return Bytes(data, data + PyBytes_GET_SIZE(bytes.ptr()));
}

std::uint8_t byteOfItem(py::handle item, const char* name, std::size_t place) {
    const auto at = [&] { return "item " + std::to_string(place); };
    if (PyIndex_Check(item.ptr()) == 0) {
        throw py::type_error(
            named(name, at() + " is of type " + Py_TYPE(item.ptr())->tp_name + "; an integer from 0 to 255 is wanted"));
    }
    int overflow = 0;
    const bool isPlain = PyLong_CheckExact(item.ptr()) != 0;  // __index__ of other types may run any code
    const Object number = isPlain ? borrow(item.ptr()) : own(entering([&] { return PyNumber_Index(item.ptr()); }));
    const long value = PyLong_AsLongAndOverflow(number.ptr(), &overflow);
    if (overflow != 0 || value < 0 || value > 255) {
        throw py::value_error(named(
            name, at() + " is " + (overflow != 0 ? "too large" : std::to_string(value)) + "; a byte is 0 to 255"));
    }
    return static_cast<std::uint8_t>(value);
}

}  // namespace

void refuseType(const char* name, const char* wanted, py::handle given) {
    throw py::type_error(named(name, std::string(wanted) + " is wanted, not " + Py_TYPE(given.ptr())->tp_name));
}

Bytes bytesOf(py::handle sequence, const char* name) {
    PyObject* const object = sequence.ptr();
    if (PyBytes_Check(object) != 0) {
        const auto* data = reinterpret_cast<const std::uint8_t*>(PyBytes_AS_STRING(object));
        return {data, data + PyBytes_GET_SIZE(object)};
    }
    if (PyByteArray_Check(object) != 0) {
        const auto* data = reinterpret_cast<const std::uint8_t*>(PyByteArray_AS_STRING(object));
        return {data, data + PyByteArray_GET_SIZE(object)};
    }
    if (PyUnicode_Check(object) != 0) refuseType(name, "a sequence of byte values", sequence);
    if (auto bytes = plainBuffer(object)) return *std::move(bytes);
    Bytes bytes;
    if (PyList_CheckExact(object) != 0) {  // __index__ of an item may change the list meanwhile
        bytes.reserve(static_cast<std::size_t>(PyList_GET_SIZE(object)));
        for (Py_ssize_t i = 0; i < PyList_GET_SIZE(object); ++i) {
            bytes.push_back(byteOfItem(borrow(PyList_GET_ITEM(object, i)), name, static_cast<std::size_t>(i)));
        }
        return bytes;
    }
    if (Py_TYPE(object)->tp_iter == nullptr && PySequence_Check(object) == 0) {
        refuseType(name, "a sequence of byte values", sequence);
    }
    eachOf(sequence, name, [&](const Object& item) {
        bytes.push_back(byteOfItem(item, name, bytes.size()));
        return true;
    });
    return bytes;
}

Object callByName(py::handle self, PyObject* method, std::initializer_list<py::handle> placed,
                  std::initializer_list<std::pair<const char*, py::handle>> named) {
    std::vector<PyObject*> arguments{self.ptr()};
    for (const py::handle each : placed) arguments.push_back(each.ptr());
    py::tuple names(named.size());
    std::size_t place = 0;
    for (const auto& [name, value] : named) {
        names[place++] = borrow(interned(name));
        arguments.push_back(value.ptr());
    }
    return own(
        entering([&] { return PyObject_VectorcallMethod(method, arguments.data(), placed.size() + 1, names.ptr()); }));
}

bool truthOf(py::handle value) {
    const int answer = entering([&] { return PyObject_IsTrue(value.ptr()); });
    if (answer < 0) throw py::error_already_set();
    return answer != 0;
}

Object integerOf(py::handle value, const char* name) {
    if (PyIndex_Check(value.ptr()) == 0) refuseType(name, "an integer", value);
    return own(entering([&] { return PyNumber_Index(value.ptr()); }));
}

std::int64_t wholeNumber(py::handle value, const char* name, std::int64_t low, std::int64_t high) {
    int overflow = 0;
    const long long number = PyLong_AsLongLongAndOverflow(integerOf(value, name).ptr(), &overflow);
    if (overflow != 0 || number < low || number > high) {
        throw std::overflow_error(
            named(name, "a number from " + std::to_string(low) + " to " + std::to_string(high) + " is wanted"));
    }
    return number;
}

namespace {

Object countedFromZero(py::handle value, const char* name, const char* what) {
    const Object number = integerOf(value, name);
    if (number < py::int_(0)) throw py::value_error(named(name, std::string(what) + " is not negative"));
    return number;
}

}  // namespace

Object bitPosition(py::handle index, const char* name) {
    const Object number = countedFromZero(index, name, "the position of a bit");
    wholeNumber(number, name, 0, mostBits - 1);
    return number;
}

Py_ssize_t itemCount(py::handle count, const char* name) {
    const Object number = countedFromZero(count, name, "a number of items");
    return static_cast<Py_ssize_t>(wholeNumber(number, name, 0, mostItems));
}

py::bytes toBytes(ByteView bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

py::list toList(ByteView bytes) {
    py::list list(bytes.size());
    Py_ssize_t place = 0;
    for (const std::uint8_t byte : bytes) PyList_SET_ITEM(list.ptr(), place++, PyLong_FromLong(byte));
    return list;
}

namespace {

// Truncates a float toward zero.
Object cutToInteger(py::handle value, const char* name) {
    if (PyIndex_Check(value.ptr()) != 0) return own(entering([&] { return PyNumber_Index(value.ptr()); }));
    const PyNumberMethods* const methods = Py_TYPE(value.ptr())->tp_as_number;
    if (methods == nullptr || methods->nb_int == nullptr) refuseType(name, "a number", value);
    return own(entering([&] { return PyNumber_Long(value.ptr()); }));
}

[[noreturn]] void refuseWidth(const char* name, std::size_t bytes) {
    throw std::overflow_error(named(name, "the number does not fit " + std::to_string(8 * bytes) + " bits"));
}

}  // namespace

template <class Number>
Number numberOf(py::handle value, const char* name) {
    if constexpr (std::is_floating_point_v<Number>) {
        const PyNumberMethods* const methods = Py_TYPE(value.ptr())->tp_as_number;
        if (methods == nullptr || (methods->nb_float == nullptr && methods->nb_index == nullptr)) {
            refuseType(name, "a number", value);
        }
        const double wide = entering([&] { return PyFloat_AsDouble(value.ptr()); });
        if (wide == -1.0 && PyErr_Occurred() != nullptr) {
            if (PyErr_ExceptionMatches(PyExc_OverflowError) == 0) throw py::error_already_set();
            PyErr_Clear();
            refuseWidth(name, sizeof(Number));
        }
        const auto narrow = static_cast<Number>(wide);
        if (std::isinf(narrow) && !std::isinf(wide)) refuseWidth(name, sizeof(Number));
        return narrow;
    } else if constexpr (std::is_same_v<Number, std::uint64_t>) {
        const unsigned long long wide = PyLong_AsUnsignedLongLong(cutToInteger(value, name).ptr());
        if (wide == static_cast<unsigned long long>(-1) && PyErr_Occurred() != nullptr) {
            PyErr_Clear();
            refuseWidth(name, sizeof(Number));
        }
        return wide;
    } else {
        int overflow = 0;
        const long long wide = PyLong_AsLongLongAndOverflow(cutToInteger(value, name).ptr(), &overflow);
        if (overflow != 0 || wide < std::numeric_limits<Number>::min() || wide > std::numeric_limits<Number>::max()) {
            refuseWidth(name, sizeof(Number));
        }
        return static_cast<Number>(wide);
    }
}

template std::uint16_t numberOf(py::handle, const char*);
template std::uint32_t numberOf(py::handle, const char*);
template std::uint64_t numberOf(py::handle, const char*);
template std::int16_t numberOf(py::handle, const char*);
template std::int32_t numberOf(py::handle, const char*);
template std::int64_t numberOf(py::handle, const char*);
template float numberOf(py::handle, const char*);
template double numberOf(py::handle, const char*);

py::str textOf(ByteView bytes) {
    Object text = own(PyUnicode_DecodeUTF8(reinterpret_cast<const char*>(bytes.data()),
                                           static_cast<Py_ssize_t>(bytes.size()), "strict"));
    if (std::ranges::find(bytes, 0) != bytes.end()) {
        const Py_ssize_t zero = PyUnicode_FindChar(text.ptr(), 0, 0, PyUnicode_GET_LENGTH(text.ptr()), 1);
        text = own(PyUnicode_Substring(text.ptr(), 0, zero));
    }
    return py::reinterpret_steal<py::str>(text.release());
}

py::list codePoints(py::handle text, const char* name) {
    py::list codes;
    eachOf(text, name, [&](const Object& character) {
        const bool isOne = PyUnicode_Check(character.ptr()) != 0 && PyUnicode_GET_LENGTH(character.ptr()) == 1;
        if (!isOne && PyBytes_Check(character.ptr()) == 0) refuseType(name, "a text of single characters", character);
        codes.append(callObject(pythonObject("builtins", "ord"), character));
        return true;
    });
    return codes;
}

py::list addressBytes(py::handle address, const char* name) {
    if (PyUnicode_Check(address.ptr()) == 0) refuseType(name, "a dotted address as text", address);
    return {callObject(pythonObject("socket", "inet_aton"), address)};
}

py::list macBytes(py::handle address, const char* name) {
    if (PyUnicode_Check(address.ptr()) == 0) refuseType(name, "an address as text", address);
    py::list bytes;
    for (const py::handle piece : callMethod(address, "split", py::str(":"))) {
        bytes.append(callObject(borrow(reinterpret_cast<PyObject*>(&PyLong_Type)), piece, py::int_(16)));
    }
    return bytes;
}

namespace {

// Too few bytes raise the IndexError of str.format.
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

namespace {

Object bit(const Object& index) { return py::int_(1) << bitPosition(index, "index"); }

// The lowest bits of a number, least significant first; a negative number is in two's complement.
std::vector<bool> lowBits(const Object& number, std::size_t width) {
    std::vector<bool> bits(width);
    int overflow = 0;
    const long long narrow = PyLong_AsLongLongAndOverflow(number.ptr(), &overflow);
    if (overflow == 0) {
        for (std::size_t i = 0; i < width; ++i) bits[i] = (narrow >> std::min<std::size_t>(i, 63) & 1) != 0;
        return bits;
    }
    const Object window = (py::int_(1) << py::int_(width)) - py::int_(1);
    const Object bytes = callMethod(number & window, "to_bytes", py::int_((width + 7) / 8), py::str("little"));
    const auto* data = reinterpret_cast<const std::uint8_t*>(PyBytes_AS_STRING(bytes.ptr()));
    for (std::size_t i = 0; i < width; ++i) bits[i] = (data[i / 8] >> (i % 8) & 1) != 0;
    return bits;
}

}  // namespace

Object clearBit(const Object& number, const Object& index) {
    const Object plain = integerOf(number, "number");
    return plain & ~bit(index);
}

Object fillBit(const Object& number, const Object& index) {
    const Object plain = integerOf(number, "number");
    return plain | bit(index);
}

// Positions beyond the number read its sign, so a distant one costs nothing.
Object readBit(const Object& number, const Object& index) {
    const Object plain = integerOf(number, "number");
    return (plain >> countedFromZero(index, "index", "the position of a bit")) & py::int_(1);
}

Object writeBit(const Object& number, const Object& index, const Object& value) {
    return value.equal(py::int_(1)) ? fillBit(number, index) : clearBit(number, index);
}

py::list bitsOf(py::handle number, py::handle width) {
    const Object plain = integerOf(number, "value_int");
    const Py_ssize_t count = itemCount(width, "width");
    py::list bits(static_cast<std::size_t>(count));
    Py_ssize_t place = 0;
    for (const bool bit : lowBits(plain, static_cast<std::size_t>(count))) {
        PyList_SET_ITEM(bits.ptr(), place++, PyLong_FromLong(bit ? 1 : 0));
    }
    return bits;
}

Object maskOfIndices(py::handle indices) {
    const py::int_ one(1);
    Object mask = py::int_(0);
    eachOf(indices, "index_list", [&](const Object& index) {
        mask = mask | (one << bitPosition(index, "index_list"));
        return true;
    });
    return mask;
}

py::list indicesOfMask(py::handle mask) {
    const Object number = countedFromZero(mask, "value_int", "a mask");
    const auto width = py::cast<std::size_t>(callMethod(number, "bit_length"));
    py::list indices;
    std::size_t place = 0;
    for (const bool bit : lowBits(number, width)) {
        if (bit) indices.append(place);
        ++place;
    }
    return indices;
}

Object maskOfPairs(py::handle indices, py::handle bits) {
    Object mask = py::int_(0);
    const py::list values = clipped(bits, py::int_(0), py::int_(1), "binary_list");
    std::size_t i = 0;
    eachOf(indices, "index_list", [&](const Object& index) {
        if (i == values.size()) return false;
        mask = mask | (integerOf(values[i++], "binary_list") << bitPosition(index, "index_list"));
        return true;
    });
    return mask;
}

py::list clipped(py::handle values, py::handle lower, py::handle upper, const char* name) {
    py::list result;
    eachOf(values, name, [&](const Object& item) {
        result.append(item < lower ? borrow(lower.ptr()) : item > upper ? borrow(upper.ptr()) : item);
        return true;
    });
    return result;
}

}  // namespace zvr::python
