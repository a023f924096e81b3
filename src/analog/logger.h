// The logger's part in interpreter shutdown.
#pragma once

namespace zvr::python {

/// Waits until every live logger has written the rows queued for an open file, then lets their threads end. Ctrl-C ends
/// the wait and reports the loss. Call it with the interpreter lock held, while other threads can still get it.
void drainLoggers();

}  // namespace zvr::python
