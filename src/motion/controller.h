// Shared by the operations of the four-axis controller.
#pragma once

#include "motion/checks.h"
#include "motion/records.h"

namespace zvr::python {

const Parameter controllerPort{"port", "int", "connector of the controller, 0; on the chassis the slot, 1, 2 or 4"};
const Parameter connector{"port", "int", "connector of the controller as the device counts it"};
const Returns commandStatus = status(6).returns;
const Parameter axisParameter{"axis", "int",
                              "axis, 0 to 3; a further number is not refused and shares the last record"};

/// Begins public operations: maps slots of the chassis to ports, and checks port and axis.
Object enter(const Op& op, const Object& port);
Object enter(const Op& op, const Object& port, const Object& axis);
/// The errors of those checks, and further ones.
Raises enteringRaises(std::initializer_list<Raises::Entry> more = {}, bool hasAxis = true);

void checkPortAndAxis(const Op& op, const Object& port, const Object& axis);

inline Object recordOf(const Op& op, const Object& axis) { return op.call("_getAxisHandle", axis); }

/// Pulse output and direction of an axis, from its record.
Awaiter applyOutput(const Op& op, const Object& port, const Object& axis);

/// The starting speed that goes with an acceleration.
Object startingSpeed(const Object& acceleration);

/// A bit of a word and its new value; only the value 1 sets it.
struct Bit {
    Bit(int index, Object value) : index(index), value(std::move(value)) {}
    Bit(int index, int value) : Bit(index, py::int_(value)) {}
    py::int_ index;
    Object value;
};
Object withBits(Object word, const std::vector<Bit>& bits);

/// Single bits of registers, and the settings of an axis.
void defineRegisterAccess(Feature& controller);
/// The reads of both position counters.
void definePositions(Feature& controller);
/// Moves, interpolations and the reference search.
void defineMoves(Feature& controller);
void defineInterpolations(Feature& controller);

}  // namespace zvr::python
