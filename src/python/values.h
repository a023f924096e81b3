// Converts Python values to bytes of the wire, and back.
#pragma once

#include <algorithm>
#include <numbers>
#include <ranges>

#include "core/wire/failures.h"
#include "python/common.h"

namespace zvr::python {

/// A TypeError in the library's words: "NAME: WANTED is wanted, not TYPE". `name` may be null.
[[noreturn]] void refuseType(const char* name, const char* wanted, py::handle given);

/// The bytes of a byte string or of an iterable of integers, which is read item by item regardless of its memory
/// layout. Throws a ValueError for a number outside 0 to 255, a TypeError for a non-integer. `name` is that of the
/// argument.
Bytes bytesOf(py::handle sequence, const char* name = nullptr);

/// The truth value of an object.
bool truthOf(py::handle value);

/// Converts to a plain integer by `__index__`.
Object integerOf(py::handle value, const char* name);
/// The same as a C++ number; throws an OverflowError outside `low` to `high`.
std::int64_t wholeNumber(py::handle value, const char* name, std::int64_t low, std::int64_t high);

/// Limits of counts and shifts: larger arguments are mistakes that would only consume memory.
constexpr std::int64_t mostBits = 65536, mostItems = 1000000;
/// The position of a bit; throws a ValueError for a negative one.
Object bitPosition(py::handle index, const char* name);
/// A number of items; throws a ValueError for a negative one.
Py_ssize_t itemCount(py::handle count, const char* name);

/// Passes each item to `take`, which returns whether to go on. Checks for signals, since an iterable may be long.
template <class Take>
void eachOf(py::handle iterable, const char* name, Take take) {
    PyObject* const iterator = entering([&] { return PyObject_GetIter(iterable.ptr()); });
    if (iterator == nullptr) {
        if (!PyErr_ExceptionMatches(PyExc_TypeError)) throw py::error_already_set();
        PyErr_Clear();
        refuseType(name, "an iterable", iterable);
    }
    const Object items = own(iterator);
    for (std::size_t count = 1;; ++count) {
        const auto item = py::reinterpret_steal<Object>(entering([&] { return PyIter_Next(items.ptr()); }));
        if (!item) {
            if (PyErr_Occurred() != nullptr) throw py::error_already_set();
            return;
        }
        if (!take(item)) return;
        if (count % 1024 == 0 && entering(PyErr_CheckSignals) != 0) throw py::error_already_set();
    }
}

/// Calls a method with positional and keyword arguments.
Object callByName(py::handle self, PyObject* method, std::initializer_list<py::handle> placed,
                  std::initializer_list<std::pair<const char*, py::handle>> named);

py::bytes toBytes(ByteView bytes);
py::list toList(ByteView bytes);

/// A number converted to a fixed width: a float is truncated toward zero for an integer type. Throws an OverflowError
/// if the number does not fit. Defined for the unsigned and signed integers of 16 to 64 bits, float and double. `name`
/// is that of the argument.
template <class Number>
Number numberOf(py::handle value, const char* name = nullptr);

template <class Number>
Bytes pack(py::handle value, const char* name = nullptr) {
    Bytes bytes;
    appendBigEndian(bytes, numberOf<Number>(value, name));
    return bytes;
}

/// All the numbers in a byte string; remaining bytes are ignored.
template <class Number>
std::vector<Number> readNumbers(ByteView bytes) {
    std::vector<Number> numbers;
    for (; bytes.size() >= sizeof(Number); bytes = bytes.subspan(sizeof(Number))) {
        numbers.push_back(readBigEndian<Number>(bytes.first(sizeof(Number))));
    }
    return numbers;
}

// Bitwise equal to Python's math.degrees and math.radians.
inline double degreesOf(double radians) { return radians * (180.0 / std::numbers::pi); }
inline double radiansOf(double degrees) { return degrees * (std::numbers::pi / 180.0); }

/// UTF-8 text, up to the first zero character.
py::str textOf(ByteView bytes);

/// The code point of each character.
py::list codePoints(py::handle text, const char* name = nullptr);

/// The four bytes of a dotted address, the six of a MAC address with colons.
py::list addressBytes(py::handle address, const char* name = nullptr);
py::list macBytes(py::handle address, const char* name = nullptr);

/// The inverse: text from at least that many bytes; throws an IndexError for fewer.
py::str addressText(ByteView bytes);
py::str macText(ByteView bytes, const char* digits);

/// Builds the data of a request from byte values, packed numbers and lists.
class Payload {
public:
    Payload& add(py::handle value) {
        list_.append(value);
        return *this;
    }
    Payload& add(int value) { return add(py::int_(value)); }
    Payload& add(ByteView packed) {
        for (const std::uint8_t byte : packed) add(static_cast<int>(byte));
        return *this;
    }
    Payload& extend(py::handle sequence) {
        callMethod(list_, "extend", sequence);
        return *this;
    }
    py::list list() const { return list_; }

private:
    py::list list_;
};

template <class... Values>
py::list payload(const Values&... values) {
    Payload data;
    (data.add(values), ...);
    return data.list();
}

// Bits, masks and lists of pins. Arguments are named as in the public functions.
Object clearBit(const Object& number, const Object& index);
Object readBit(const Object& number, const Object& index);
Object fillBit(const Object& number, const Object& index);
/// Only the value 1 sets the bit.
Object writeBit(const Object& number, const Object& index, const Object& value);
py::list bitsOf(py::handle number, py::handle width);
Object maskOfIndices(py::handle indices);
py::list indicesOfMask(py::handle mask);
Object maskOfPairs(py::handle indices, py::handle bits);
py::list clipped(py::handle values, py::handle lower, py::handle upper, const char* name = "list_");

/// Remembers the package's functions that check arguments and statuses. Operations look them up in the module each
/// time: a user's replacement is called through Python, the library's own directly. Call it when all of them are in the
/// module.
void rememberChecks(py::handle module);

/// The code of the error that `checkFirmwareError` raises for a status; null if it raises none.
Object refusalOf(const Object& status);

// Input checks; they throw the named error.
void checkInputType(py::handle value, py::handle type);
void checkEachItemInRange(py::handle values, py::handle low, py::handle high, py::handle message);
bool checkInputTypeConsistent(py::handle first, py::handle second);
bool checkFuncPinMap(py::handle cell, py::handle pinMap, py::handle allowed);
bool checkPinMap(py::handle cells, py::handle pinMap, py::handle allowed);

// The same, as called by operations; `name` is that of the argument.
void checkIsInt(py::handle value, const char* name = nullptr);
void checkIsNumber(py::handle value, const char* name = nullptr);
void checkIsBool(py::handle value, const char* name = nullptr);
void checkIsList(py::handle value, const char* name = nullptr);
void checkIsIntOrList(py::handle value, const char* name = nullptr);
void checkIsText(py::handle value, const char* name = nullptr);
void checkIsTextOrList(py::handle value, const char* name = nullptr);
void checkItems(py::handle values, py::handle low, py::handle high, py::handle message = {});
/// The failure for an argument outside the accepted values, with a note that lists them.
Failure notAmong(FailureId failure, py::handle accepted);
void checkSameType(py::handle first, py::handle second);
bool isPinFree(py::handle cell, py::handle pinMap, py::handle allowed);

/// Whether a value equals one of these numbers.
template <class Numbers = std::initializer_list<int>>
bool isOneOf(py::handle value, const Numbers& numbers) {
    return std::ranges::any_of(numbers, [&](int number) { return value.equal(py::int_(number)); });
}
/// The same for `count` numbers from `first` on.
inline bool isOneFrom(py::handle value, int first, int count) {
    return isOneOf(value, std::views::iota(first, first + count));
}

}  // namespace zvr::python
