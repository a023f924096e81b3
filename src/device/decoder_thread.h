// The threads that feed queues from the frames of a stream, as Python sees them.
//
// Such a thread has a method of the object for its body, a field that ends it, a lock that it passes once a turn, and
// queues that it takes from and puts to. All of them are ordinary attributes. While they are the library's own, the
// thread works on the C++ objects behind them and never takes the interpreter lock; as soon as one is replaced, it does
// the same steps through the object, and once nothing is replaced any more it goes back.
#pragma once

#include "core/engine/stream_reader.h"
#include "device/row_fifo.h"
#include "device/watch.h"

namespace zvr::python {

/// What a thread uses now.
struct FeedParts {
    Object lock;
    std::vector<std::pair<Object, Object>> queues;  ///< of frames, and of the items beside it
};

/// A function of a device whose frames a thread turns into items.
struct StreamedFunction {
    const char* body;    ///< method that is the thread's body; also the thread's name
    const char* killed;  ///< field that ends the thread
    FailureId overflow;  ///< warning for each item that a full queue drops
    const ItemKind& items;
    bool polls;  ///< it looks at its queues in turn, and does not wait at its only one
    FeedParts (*partsOf)(py::handle self, std::size_t index);
    RowLayout (*layoutOf)(py::handle self);
    /// The items of one frame.
    Object (*itemsOf)(py::handle self, const Object& frame);
    /// What the body is called with.
    std::vector<Object> (*argumentsOf)(const FeedParts& parts);
};

/// Makes and starts the thread number `index` of an object, and gives it as Python's object. It ends with that object.
Object startFeeder(py::handle self, const StreamedFunction& function, std::size_t index,
                   const std::shared_ptr<Gate>& gate);
/// Whether the object has such a thread in this field, and it runs.
bool hasFeeder(py::handle self, const char* field);

/// Runs the body on the caller's thread until `killed`, with the parts that there are at each turn.
void runFeederBody(py::handle self, const StreamedFunction& function, const std::function<FeedParts()>& parts);

/// Passes a lock as a gate: waits until nobody holds it. The second one waits for a short turn only, and tells whether
/// it has passed.
void passLock(py::handle lock);
bool passInTurn(py::handle lock);

}  // namespace zvr::python
