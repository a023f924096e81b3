// Host names, looked up on threads of their own, since nobody can end the system's search.
#pragma once

#include <asio/ip/address_v4.hpp>

#include <vector>

#include "core/engine/waiting.h"

namespace zvr {

/// The IPv4 addresses of a host, first those that the system prefers. Throws std::system_error, at the deadline with
/// timed_out.
std::vector<asio::ip::address_v4> addressesOf(const std::string& host, Deadline deadline, const InterruptCheck& onWait);

/// Those that this host's own name stands for, as far as they are known within a tenth of a second.
std::vector<asio::ip::address_v4> ownNamedAddresses(const InterruptCheck& onWait);

}  // namespace zvr
