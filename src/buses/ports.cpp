#include "buses/ports.h"

namespace zvr::python {

py::list freeModes() {
    py::list modes;
    for (const char* mode : {"Idle", "DI", "DO"}) modes.append(mode);
    return modes;
}

Reply bytesFrom(std::size_t place) {
    return {[place](py::handle, const Bytes& data) -> Object {
                return toList(ByteView(data).subspan(std::min(place, data.size())));
            },
            {"list[int]", "bytes as they came; a refusal shows in their number only", "the device"}};
}

}  // namespace zvr::python
