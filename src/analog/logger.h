// The logger's part in the end of the interpreter.
#pragma once

namespace zvr::python {

/// Waits for every live logger until what is queued for an open file is written, then lets their threads end. Ctrl-C
/// ends the wait and tells what is lost. To be called with the interpreter lock held, while threads still get it.
void drainLoggers();

}  // namespace zvr::python
