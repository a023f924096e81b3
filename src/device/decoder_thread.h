// Streamed functions: frames of a stream arrive in one queue, and a decoder thread puts their items into another.
//
// The body of such a thread is a method of the object; a field ends it, it passes a lock on each iteration, takes from
// queues and puts into others. All of these are ordinary attributes. While they are the library's own, the thread works
// on the C++ objects behind them and never takes the interpreter lock; while any is replaced, it does the same steps
// through the object.
#pragma once

#include "core/engine/pools.h"
#include "device/row_fifo.h"

namespace zvr::python {

/// The fields of an object that belong to one decoder thread.
struct DecoderFields {
    const char* lock;
    const char* frames;  ///< queue of frames, or a list of such queues
    const char* items;   ///< queue of items, or a list of as many
    const char* thread;
};

/// Their current values; a body may be called with others.
struct DecoderParts {
    Object lock = {}, frames = {}, items = {};
};

/// A function of a device whose frames are decoded into items by threads.
struct StreamedFunction {
    const char* body;    ///< method that is the threads' body; also their name
    const char* killed;  ///< field that ends the threads
    const char* opened;  ///< field that holds whether the function is open
    FailureId overflow;  ///< warning for each item that a full queue drops
    const ItemKind& items;
    std::span<const DecoderFields> threads;
    bool hasLists = false;          ///< a thread has lists of queues: it polls them in turn and waits on none
    bool bodyTakesLock = false;     ///< before the frames
    bool bodyTakesItems = false;    ///< after them
    bool opensBeforeMarks = false;  ///< when freed, opens the gates before markers wake the threads, not after
    /// Keys of the frame queues of one thread; a single one unless `hasLists`.
    std::vector<StreamKey> (*keysOf)(py::handle self, std::size_t thread);
    RowLayout (*layoutOf)(py::handle self);
    /// Decodes the items of one frame, if the layout does not.
    Object (*itemsOf)(py::handle self, const Object& frame) = nullptr;
};

/// Registers the names of all attributes that the threads use.
void watchStream(const StreamedFunction& function);
/// The work of the constructors of both forms: sets the fields, and makes and starts the threads that do not run yet.
/// They end with the object.
void constructStream(py::handle self, const StreamedFunction& function);
/// Calls "acquire" or "release" on all the locks.
void turnLocks(py::handle self, const StreamedFunction& function, const char* action);
bool isStreamOpen(py::handle self, const StreamedFunction& function);
/// Shuts the gates if the function is open, and wakes the threads to check again.
void closeStream(py::handle self, const StreamedFunction& function);
/// Ends the threads for good.
void freeStream(py::handle self, const StreamedFunction& function);

/// Runs the body on the caller's thread until `killed`; missing parts are looked up at each iteration as those of the
/// first thread.
void runDecoderBody(py::handle self, const StreamedFunction& function, const DecoderParts& given);

/// Passes a lock as a gate: waits until it is free. The second one waits for a short slice only and returns whether it
/// has passed.
void passLock(py::handle lock);
bool passInTurn(py::handle lock);

}  // namespace zvr::python
