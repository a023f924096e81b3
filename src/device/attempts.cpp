#include "device/attempts.h"

#include "core/wire/commands.h"
#include "python/arguments.h"
#include "python/raising.h"

namespace zvr::python {

namespace {

std::string nameOf(py::handle command) {
    const std::string_view name =
        PyLong_Check(command.ptr()) != 0 ? nameOfCommand(argument<int>(command, "cmd")) : std::string_view();
    return name.empty() ? "command " + shown(command) : std::string(name);
}

// The model name in the device's driver information, if it is that of another model.
std::string otherModelOf(py::handle self) {
    const Object reported = attributeOrNothing(self, "_driver_name");
    if (!reported || PyUnicode_Check(reported.ptr()) == 0) return {};
    const Object names = callMethod(packageObject("LABEL_DICT"), "values");
    const int isModel = entering([&] { return PySequence_Contains(names.ptr(), reported.ptr()); });
    if (isModel < 0) throw py::error_already_set();
    if (isModel == 0 || callMethod(self, "_getDeviceName").equal(reported)) return {};
    return py::str(reported);
}

std::string times(int count) { return count == 1 ? "once" : std::to_string(count) + " times"; }

}  // namespace

void Attempts::add(py::handle self, py::handle command) {
    if (++sendings_ == 1) return;
    logOf(self, LogLevel::warning,
          [&] { return "no reply yet, " + nameOf(command) + " is sent again (" + std::to_string(sendings_) + ")"; });
}

std::vector<std::string> Attempts::notes(py::handle self, py::handle command) const {
    const std::string place = placeOf(self);
    std::vector<std::string> notes{nameOf(command) + " was sent " + times(sendings_) +
                                   (place.empty() ? "" : " to " + place) + meanwhile(self)};
    if (const std::string other = otherModelOf(self); !other.empty()) {
        notes.push_back("the device calls itself " + other + ": is " + Py_TYPE(self.ptr())->tp_name +
                        " the right class?");
    }
    return notes;
}

std::string Attempts::meanwhile(py::handle self) const {
    const auto client = nativeOrNothing<Client>(attributeOrNothing(self, "client_cmd"));
    if (!client || client.get() != client_) return {};
    const std::uint64_t came = client->splitter.received() - before_;
    if (came == 0) return "; nothing came meanwhile";
    return "; " + std::to_string(came) + (came == 1 ? " byte" : " bytes") + " of other frames came meanwhile";
}

}  // namespace zvr::python
