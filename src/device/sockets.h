// The `socket` field of the clients: a socket of ours, 0, or whatever object a user puts there.
#pragma once

#include "python/classes.h"
#include "transport/socket_client.h"

namespace zvr::python {

void defineSocket(Package& package);

/// The methods that a client uses of an object in place of its socket.
struct SocketSteps {
    const char* receive;
    const char* send;
    const char* setTimeout;  ///< null where it has none
};
inline constexpr SocketSteps networkSteps{"recv", "send", "settimeout"}, lineSteps{"read", "write", nullptr};

Object socketOf(py::handle self, const std::shared_ptr<SocketClient>& client);
void setSocket(py::handle self, const std::shared_ptr<SocketClient>& client, const Object& value,
               const SocketSteps& steps);

/// A field over native state is deleted and found again as one in the object's dictionary is, which is how a patched
/// one is put back.
void requireField(py::handle self, const char* field);
void restoreField(py::handle self, const char* field);
void addDeleter(py::handle type, const char* field);

/// Bytes that one read may ask for; a read takes what is there, so a larger number asks for no more. Throws a
/// ValueError for a negative one.
std::size_t lengthOf(py::handle most, const char* name);

py::dict dictionaryOf(py::handle self);

}  // namespace zvr::python
