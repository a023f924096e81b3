// The frames of all links as the logger "pyzvr.wire" tells them: by name and in hex.
#pragma once

#include "transport/client.h"

namespace zvr::python {

/// Whether frames are listened to: what was found when it was asked last. Any thread.
bool framesAreLogged() noexcept;
/// Asks the logger again; from then on clients tell what they send. Under the interpreter lock.
void askForFrameLog();

/// Without the interpreter lock. The client may be gone.
void logReceived(const std::weak_ptr<Client>& client, const Packet& packet) noexcept;

}  // namespace zvr::python
