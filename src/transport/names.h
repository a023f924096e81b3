// Host names, looked up on threads of their own, since the system's lookup cannot be cancelled.
#pragma once

#include <asio/ip/address_v4.hpp>

#include <vector>

#include "core/engine/waiting.h"

namespace zvr {

/// The IPv4 addresses of a host, in the system's order of preference. Throws std::system_error, at the deadline with
/// timed_out.
std::vector<asio::ip::address_v4> addressesOf(const std::string& host, Deadline deadline, const InterruptCheck& onWait);

/// The addresses of this host's own name, if the lookup finishes within a tenth of a second.
std::vector<asio::ip::address_v4> ownNamedAddresses(const InterruptCheck& onWait);

}  // namespace zvr
