// What the files of the analog inputs share. Their streaming side is a reader thread, its queues, and the fields that
// the thread reads.
#pragma once

#include "analog/rows.h"
#include "core/engine/stream_reader.h"
#include "device/feature.h"
#include "device/runtime.h"
#include "digital/pin_map.h"
#include "models/traits.h"

namespace zvr::python {

/// What a model tells a streaming analog input.
struct InputOffer {
    Object ports, maxRate, ratio, channels;
    bool variable = false;
    Command streamCommand = START_AI_STREAMING;
};

/// Sets the fields of the object, and starts its one reader thread if it does not run yet.
void constructInput(py::handle self, const InputOffer& offer);

/// Mode, number of samples and rate, which those without streaming have too.
void defineInputConfiguration(Feature& feature);

/// Streaming operations and fields that all streaming modules share.
void defineInputStreaming(Feature& based);
/// Reading what has been streamed.
void defineInputReading(Feature& module);

/// The list of chip selects that are enabled on a port.
Object chipSelectsOf(py::handle self, const Object& port);

inline const Parameter inputPortParameter{"port", "int",
                                          "port of the analog input; on the chassis the slot, 1, 2 or 4"};
inline constexpr PinnedPorts inputPorts{"AI", "ai_dict", "ai_port", FailureId::AIPortNotAvaliableError};
inline const Definition checkAIPort = portCheck(inputPorts);

}  // namespace zvr::python
