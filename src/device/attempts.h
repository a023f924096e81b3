// Counts the sendings of a request, for the notes of its timeout error.
#pragma once

#include "device/request_path.h"

namespace zvr::python {

/// `look` is cheap; the notes are made only after a timeout.
class Attempts {
public:
    /// Before a sending: records the number of bytes received so far.
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

    const Client* client_ = nullptr;  // only compared
    std::uint64_t before_ = 0;
    int sendings_ = 0;
};

}  // namespace zvr::python
