// The extension module: each folder defines its part of the package, in the order of the layers.
#ifdef __linux__
#include <pthread.h>
#endif

#include "analog/analog.h"
#include "analog/logger.h"
#include "buses/buses.h"
#include "device/devices.h"
#include "device/protocol.h"
#include "device/runtime.h"
#include "digital/digital.h"
#include "drone/drone.h"
#include "models/models.h"
#include "motion/motion.h"
#include "python/raising.h"
#include "sensing/sensing.h"
#include "services/services.h"

namespace {

void prepare(pybind11::module_& module) {
    using namespace zvr::python;
    rememberMainThread(pythonObject("threading", "main_thread")().attr("ident").cast<unsigned long>());
#ifdef __linux__
    ::pthread_atfork(nullptr, nullptr, [] { rememberMainThread(PyThread_get_thread_ident()); });
#endif
    prepareCoroutineType(module);
    prepareLoopWakerType();
    prepareOperationType(module);
    prepareRaising();
    pybind11::module_::import("atexit").attr("register")(pybind11::cpp_function([] {
        drainLoggers();
        leaveLibrary();
    }));
}

}  // namespace

namespace {

void execute(pybind11::module_ module) {
    using namespace zvr::python;
    module.doc() = "Host-side driver library for data-acquisition, control and motion devices.";
    prepare(module);
    Package package(module);
    defineProtocol(package);
    defineDevices(package);
    defineServices(package);
    defineDigital(package);
    defineBuses(package);
    defineAnalog(package);
    defineSensing(package);
    defineMotion(package);
    defineDrone(package);
    defineModels(package);
    defineCatalogue(package);
    defineOpening(package);
    completeBoundTypes(package);
}

// The library's threads use the main interpreter only.
int executeSlot(PyObject* module) {
    try {
        if (PyInterpreterState_Get() != PyInterpreterState_Main()) {
            PyErr_SetString(PyExc_ImportError, "pyzvr can be imported in the main interpreter only");
            return -1;
        }
        pybind11::detail::get_internals();
        execute(pybind11::reinterpret_borrow<pybind11::module_>(module));
        return 0;
    } catch (pybind11::error_already_set& error) {
        error.restore();
    } catch (const std::exception& error) {
        PyErr_SetString(PyExc_ImportError, error.what());
    }
    return -1;
}

PyModuleDef_Slot slots[] = {{Py_mod_exec, reinterpret_cast<void*>(executeSlot)},
#ifdef Py_mod_multiple_interpreters
                            {Py_mod_multiple_interpreters, Py_MOD_MULTIPLE_INTERPRETERS_NOT_SUPPORTED},
#endif
                            {0, nullptr}};
PyModuleDef definition = {PyModuleDef_HEAD_INIT, "pyzvr", nullptr, 0, nullptr, slots, nullptr, nullptr, nullptr};

}  // namespace

extern "C" PYBIND11_EXPORT PyObject* PyInit_pyzvr() { return PyModuleDef_Init(&definition); }
