// The extension module: each folder puts its part into the package, in the order of the layers.
#include "analog/analog.h"
#include "buses/buses.h"
#include "devices/devices.h"
#include "digital/digital.h"
#include "drone/drone.h"
#include "models/models.h"
#include "motion/motion.h"
#include "protocol/protocol.h"
#include "protocol/runtime.h"
#include "python/raising.h"
#include "sensing/sensing.h"
#include "services/services.h"

namespace {

void prepare(pybind11::module_& module) {
    using namespace zvr::python;
    rememberMainThread();
    prepareCoroutineType(module);
    prepareWakerType();
    prepareOperationType(module);
    prepareRaising();
    pybind11::module_::import("atexit").attr("register")(pybind11::cpp_function([] {
        endAllRuntimes();
        leaveInterpreter();
    }));
}

}  // namespace

PYBIND11_MODULE(pyzvr, module) {
    module.doc() = "Host-side driver library for data-acquisition, control and motion devices.";
    prepare(module);
    zvr::python::Package package(module);
    zvr::python::defineProtocol(package);
    zvr::python::defineDevices(package);
    zvr::python::defineServices(package);
    zvr::python::defineDigital(package);
    zvr::python::defineBuses(package);
    zvr::python::defineAnalog(package);
    zvr::python::defineSensing(package);
    zvr::python::defineMotion(package);
    zvr::python::defineDrone(package);
    zvr::python::defineModels(package);
    zvr::python::defineCatalogue(package);
}
