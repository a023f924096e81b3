// Values of Python as bytes of the wire, and back.
#pragma once

#include "core/failures.h"
#include "python/common.h"

namespace zvr::python {

/// The bytes of a byte string or of a sequence of integers. Throws a value failure for a number outside 0 to 255, a
/// type failure for what is no number.
Bytes bytesOf(py::handle sequence);

py::bytes toBytes(ByteView bytes);
py::list toList(ByteView bytes);

/// A number coerced to a fixed width: a float for an integer is cut toward zero. Throws an overflow failure for a
/// number that does not fit. Defined for the unsigned and signed integers of 16 to 64 bits, float and double.
template <class Number>
Number numberOf(py::handle value);

template <class Number>
Bytes pack(py::handle value) {
    Bytes bytes;
    appendBigEndian(bytes, numberOf<Number>(value));
    return bytes;
}

/// UTF-8 text, cut at the first zero character.
py::str textOf(ByteView bytes);

/// The code point of each character.
py::list codePoints(py::handle text);

/// The four bytes of a dotted address, the six of a hexadecimal one with colons.
py::list addressBytes(py::handle address);
py::list macBytes(py::handle address);

/// The same as text, from as many bytes or more; throws an index failure for fewer.
py::str addressText(ByteView bytes);
py::str macText(ByteView bytes, const char* digits);

/// Builds the data of a request: byte values as they are, packed numbers and lists in place.
class Payload {
public:
    Payload& add(py::handle value) {
        list_.append(value);
        return *this;
    }
    Payload& add(int value) { return add(py::int_(value)); }
    Payload& add(const Bytes& packed) {
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

inline Bytes u16(py::handle value) { return pack<std::uint16_t>(value); }
inline Bytes u16(int value) { return pack<std::uint16_t>(py::int_(value)); }

// Bits, masks and lists of pins.
Object readBit(const Object& number, const Object& index);
/// Only the value 1 sets the bit.
Object writeBit(const Object& number, const Object& index, const Object& value);
py::list bitsOf(py::handle number, py::handle width);
Object maskOfIndices(py::handle indices);
py::list indicesOfMask(py::handle mask);
Object maskOfPairs(py::handle indices, py::handle bits);
py::list clipped(py::handle values, py::handle lower, py::handle upper);

// Input checks; they throw the named failure.
void checkInputType(py::handle value, py::handle type);
bool checkInputTypeConsistent(py::handle first, py::handle second);
bool checkFuncPinMap(py::handle cell, py::handle pinMap, py::handle allowed);
bool checkPinMap(py::handle cells, py::handle pinMap, py::handle allowed);
void checkIsInt(py::handle value);
void checkIsNumber(py::handle value);
void checkIsIntOrList(py::handle value);
void checkIsText(py::handle value);
void checkIsTextOrList(py::handle value);

/// Whether a value equals one of these numbers.
bool isOneOf(py::handle value, std::initializer_list<int> numbers);

/// The body of a check method that accepts a few integers.
template <FailureId failure, int... accepted>
void checkAccepted(py::handle, const Object& value) {
    checkIsInt(value);
    if (!isOneOf(value, {accepted...})) throw Failure(failure);
}

}  // namespace zvr::python
