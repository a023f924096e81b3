// The `socket` field of the clients: a native socket, 0, or a user's object.
#pragma once

#include "python/classes.h"
#include "transport/socket_client.h"

namespace zvr::python {

void defineSocket(Package& package);

/// The methods that a client calls on a user's object in place of its socket.
struct SocketSteps {
    const char* receive;
    const char* send;
    const char* setTimeout;  ///< null if it has none
};
inline constexpr SocketSteps networkSteps{"recv", "send", "settimeout"}, lineSteps{"read", "write", nullptr};

Object socketOf(py::handle self, const std::shared_ptr<SocketClient>& client);
void setSocket(py::handle self, const std::shared_ptr<SocketClient>& client, const Object& value,
               const SocketSteps& steps);

/// Make a field over native state behave on deletion like one in the object's dictionary; mocking tools restore patched
/// fields by deleting them.
void requireField(py::handle self, const char* field);
void restoreField(py::handle self, const char* field);
void addDeleter(py::handle type, const char* field);

/// Number of bytes that one read requests; larger arguments are limited, since a read takes only what is there. Throws
/// a ValueError for a negative one.
std::size_t lengthOf(py::handle most, const char* name);

}  // namespace zvr::python
