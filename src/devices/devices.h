// Clients and device classes, as Python sees them.
#pragma once

#include "python/classes.h"

namespace zvr::python {

void defineClients(Package& package);
void defineDevice(Package& package);
void defineNetworkDevices(Package& package);

inline void defineDevices(Package& package) {
    defineClients(package);
    defineDevice(package);
    defineNetworkDevices(package);
}

/// Parameters and messages that all device classes share.
extern const Parameter verboseParameter;
void printMessage(const Object& verbose, const char* verb, py::handle self, const Object& place = {});

/// Makes the gated receive thread of a connection, and the object's fields for it: client_<link>,
/// connect_status_<link>, recv_<link>_lock and recv_<link>_thread.
struct Link {
    const char* client;
    const char* status;
    const char* lock;
    const char* thread;
    const char* body;
    int readLength;
};
void openLink(py::handle self, const Link& link, const Object& client);

/// The client is kept in the object's own dictionary, and the receive thread is told of each new one.
Object clientOf(py::handle self, const Link& link);
void setClient(py::handle self, const Link& link, const Object& client);

template <const Link& link>
void defineLinkFields(ClassMaker& type, const char* clientType) {
    type.field({link.status, "bool", "whether the connection is open"})
        .field({link.lock, "Gate", "gate of the receive thread, shut while there is no connection"})
        .field({link.thread, "ReceiveThread", "the receive thread, from construction to close"})
        .property(
            {link.client, std::string(clientType) + " | None", "The client that the receive thread reads from."},
            [](py::handle self) { return clientOf(self, link); },
            [](py::handle self, const Object& client) { setClient(self, link, client); });
}

/// Shuts the gate, waits a moment and disconnects the client.
void shutLink(py::handle self, const Link& link);

}  // namespace zvr::python
