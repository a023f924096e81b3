#include "models/traits.h"

#include <algorithm>

namespace zvr::python {

bool isModel(py::handle self, std::initializer_list<const char*> names) {
    const py::handle bases = Py_TYPE(self.ptr())->tp_mro;
    return std::any_of(bases.begin(), bases.end(), [&](py::handle type) {
        const std::string_view name = reinterpret_cast<PyTypeObject*>(type.ptr())->tp_name;
        return std::ranges::find(names, name) != names.end();
    });
}

Object devicePort(py::handle self, const Object& port) {
    return isModel(self, {"Lattice"}) ? port - py::int_(1) : port;
}

void adaptPort(py::handle self, std::vector<Object>& arguments) { arguments[0] = devicePort(self, arguments[0]); }

}  // namespace zvr::python
