// Streamed functions: frames of a stream come into one queue, and a decoder thread puts what they hold into another.
//
// Such a thread has a method of the object for its body, a field that ends it, a lock that it passes once a turn, and
// queues that it takes from and puts to. All of them are ordinary attributes. While they are the library's own, the
// thread works on the C++ objects behind them and never takes the interpreter lock; as soon as one is replaced, it does
// the same steps through the object, and once nothing is replaced any more it goes back.
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

/// What they hold now; a body may be given others.
struct DecoderParts {
    Object lock = {}, frames = {}, items = {};
};

/// A function of a device whose frames threads turn into items.
struct StreamedFunction {
    const char* body;    ///< method that is the threads' body; also their name
    const char* killed;  ///< field that ends the threads
    const char* opened;  ///< field that tells whether the function is open
    FailureId overflow;  ///< warning for each item that a full queue drops
    const ItemKind& items;
    std::span<const DecoderFields> threads;
    bool hasLists = false;          ///< a thread has lists of queues: it polls them in turn, and waits at none
    bool bodyTakesLock = false;     ///< before the frames
    bool bodyTakesItems = false;    ///< after them
    bool opensBeforeMarks = false;  ///< at the end the gates are opened before markers wake the threads, not after
    /// Keys of the queues of frames of one thread: a single one but for lists.
    std::vector<StreamKey> (*keysOf)(py::handle self, std::size_t thread);
    RowLayout (*layoutOf)(py::handle self);
    /// The items of one frame, where they are not what the layout says.
    Object (*itemsOf)(py::handle self, const Object& frame) = nullptr;
};

/// Names all that the threads use.
void watchStream(const StreamedFunction& function);
/// What the constructors of both forms do: sets the fields, and makes and starts the threads that do not run yet. They
/// end with the object.
void constructStream(py::handle self, const StreamedFunction& function);
/// Calls "acquire" or "release" of all the locks.
void turnLocks(py::handle self, const StreamedFunction& function, const char* action);
bool isStreamOpen(py::handle self, const StreamedFunction& function);
/// Shuts the gates if the function is open, and lets the threads look around.
void closeStream(py::handle self, const StreamedFunction& function);
/// Ends the threads for good.
void freeStream(py::handle self, const StreamedFunction& function);

/// Runs the body on the caller's thread until `killed`; parts that it is not given are those of the first thread, as
/// the object has them at each turn.
void runDecoderBody(py::handle self, const StreamedFunction& function, const DecoderParts& given);

/// Passes a lock as a gate: waits until nobody holds it. The second one waits for a short turn only, and returns whether
/// it has passed.
void passLock(py::handle lock);
bool passInTurn(py::handle lock);

}  // namespace zvr::python
