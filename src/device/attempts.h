// A request that is sent again and again, and what its time-out tells beside its text.
#pragma once

#include "device/request_path.h"

namespace zvr::python {

/// Looking costs nothing; the notes are made when all is over.
class Attempts {
public:
    /// Before a sending: what came until then.
    void look(const RequestPath& path) {
        if (sendings_ > 1) return;
        client_ = path.client.get();
        before_ = path.client->splitter.received();
    }
    void add(py::handle self, py::handle command);
    int count() const { return sendings_; }

    std::vector<std::string> notes(py::handle self, py::handle command) const;

private:
    std::string meanwhile(py::handle self) const;

    const Client* client_ = nullptr;  // only to be compared
    std::uint64_t before_ = 0;
    int sendings_ = 0;
};

}  // namespace zvr::python
