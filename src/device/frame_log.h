// Logs the frames of all links to the logger "pyzvr.wire", by name and in hex.
#pragma once

#include "transport/client.h"

namespace zvr::python {

/// Whether frames are logged, as of the last `askForFrameLog`. On any thread.
bool framesAreLogged() noexcept;
/// Asks the logger again; from then on the frames that clients send are logged if enabled. Under the interpreter lock.
void askForFrameLog();

/// Without the interpreter lock. The client may already be destroyed.
void logReceived(const std::weak_ptr<Client>& client, const Packet& packet) noexcept;

}  // namespace zvr::python
