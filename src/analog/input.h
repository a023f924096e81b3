// Shared by the files of the analog inputs. Streaming consists of a decoder thread, its queues, and the fields that the
// thread reads.
#pragma once

#include "analog/rows.h"
#include "core/engine/stream_reader.h"
#include "device/feature.h"
#include "device/runtime.h"
#include "digital/pin_map.h"
#include "models/traits.h"

namespace zvr::python {

/// A model's resources for a streaming analog input.
struct InputOffer {
    Object ports, maxRate, ratio, channels;
    bool variable = false;
    Command streamCommand = START_AI_STREAMING;
};

/// Sets the fields of the object, and starts its only decoder thread if it does not run yet.
void constructInput(py::handle self, const InputOffer& offer);

/// Mode, number of samples and rate; modules without streaming have them too.
void defineInputConfiguration(Feature& feature);

/// Streaming operations and fields that all streaming modules share.
void defineInputStreaming(Feature& based);
/// Reading what has been streamed.
void defineInputReading(Feature& module);

/// The row queues of a port's chip selects.
struct Selection {
    std::vector<Object> objects;
    std::vector<std::shared_ptr<RowQueue>> queues;  ///< shorter than `objects` if one of those is foreign
    bool haveOwnSizes = true;                       ///< all are the library's own, and their size methods too

    bool ours() const { return queues.size() == objects.size(); }
    std::size_t size() const;
};

/// The queues of a port in the device's numbering.
Selection select(py::handle self, const Object& port);
/// Waits until each queue has this many rows, until `deadline` at most; returns the number that all have, at most
/// `count`.
Task awaitRows(Op op, std::shared_ptr<Selection> selection, std::size_t count, Deadline deadline);
/// Takes at most `count` consecutive rows as a block.
std::shared_ptr<SampleBlock> takeBlock(py::handle self, const Object& port, const Selection& selection,
                                       std::size_t count);

// Pass a stream's rate, start and end to the row queues; foreign queues are skipped.
void noteRate(py::handle self, int port, double rate);
void noteStart(py::handle self, const Object& port);
void noteEnd(py::handle self, int port);
/// No reads follow for now.
void dropSpareLists(py::handle self);

/// The iterator over a stream's blocks.
extern const Definition streamOfBlocks;

/// The list of chip selects that are enabled on a port.
Object chipSelectsOf(py::handle self, const Object& port);

inline const Parameter inputPortParameter{"port", "int",
                                          "port of the analog input; on the chassis the slot, 1, 2 or 4"};
inline constexpr PinnedPorts inputPorts{"AI", "ai_dict", "ai_port", FailureId::AIPortNotAvaliableError};
inline const Definition checkAIPort = portCheck(inputPorts);

}  // namespace zvr::python
