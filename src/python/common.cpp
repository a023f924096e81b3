#include "python/common.h"

#include <atomic>
#include <cstring>
#include <map>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

#include "core/engine/never_destroyed.h"
#include "core/engine/threads.h"

namespace zvr::python {

namespace {

std::atomic<bool> leaving{false};
std::atomic<unsigned long> leavingThread{0}, mainThread{0};

struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
};
using Names = std::unordered_map<std::string, PyObject*, TextHash, std::equal_to<>>;

PyObject* internedWith(Names& names, std::string_view name, const char* ending) {
    const auto known = names.find(name);
    if (known != names.end()) return known->second;
    PyObject* const made = PyUnicode_InternFromString((std::string(name) + ending).c_str());
    if (made == nullptr) throw py::error_already_set();
    return names.emplace(name, made).first->second;
}

}  // namespace

// Names are nearly always literals, so they are cached by address; the text is compared too, as an address may be
// reused.
PyObject* interned(const char* name) {
    struct Known {
        const char* place = nullptr;
        const char* characters = nullptr;
        PyObject* text = nullptr;
    };
    static auto& names = neverDestroyed<Names>();
    static auto& known = neverDestroyed<std::array<Known, 1024>>();
    Known& entry = known[(reinterpret_cast<std::uintptr_t>(name) >> 2) % known.size()];
    if (entry.place == name && std::strcmp(name, entry.characters) == 0) return entry.text;
    PyObject* const text = internedWith(names, name, "");
    entry = {name, PyUnicode_AsUTF8(text), text};
    return text;
}

PyObject* internedAsyncName(const char* name) {
    static auto& names = neverDestroyed<Names>();
    return internedWith(names, name, "_async");
}

Object attributeOrNothing(py::handle object, const char* name) {
    PyObject* const text = interned(name);
    PyObject* found = entering([&] { return PyObject_GetAttr(object.ptr(), text); });
    if (found == nullptr) {
        if (!PyErr_ExceptionMatches(PyExc_AttributeError)) throw py::error_already_set();
        PyErr_Clear();
    }
    return py::reinterpret_steal<Object>(found);
}

Object pythonObject(const char* module, const char* name) {
    static auto& modules = neverDestroyed<std::map<const char*, Object>>();
    Object& entry = modules[module];
    if (!entry) entry = py::module_::import(module);
    return attribute(entry, name);
}

void rememberMainThread(unsigned long thread) { mainThread = thread; }

void parkThread() noexcept {
    forgetThisThread();
    for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
}

WithoutGil::~WithoutGil() {
    if (leavingThread != PyThread_get_thread_ident() && !interpreterAlive()) parkThread();
    entering([this] {
        PyEval_RestoreThread(state_);
        return state_;
    });
}

WithGil::WithGil() {
    if (!interpreterAlive()) parkThread();
    state_ = entering([] { return PyGILState_Ensure(); });
}

InterruptCheck signalCheck() {
    if (PyThread_get_thread_ident() != mainThread) return {};
    return [] {
        const WithGil acquired;
        if (entering(PyErr_CheckSignals) != 0) throw py::error_already_set();
    };
}

// The finalizing thread keeps running Python long after Py_IsInitialized() returns false.
bool interpreterAlive() {
    if (Py_IsInitialized() != 0) return !leaving || leavingThread == PyThread_get_thread_ident();
    return leavingThread == PyThread_get_thread_ident() && PyGILState_GetThisThreadState() != nullptr;
}

void leaveInterpreter() {
    leavingThread = PyThread_get_thread_ident();
    leaving = true;
}

namespace {

// Objects dropped after finalization cannot be released; kept here so that leak checkers see them as reachable.
void leaveBehind(PyObject* object) {
    static auto& lock = neverDestroyed<std::mutex>();
    static auto& left = neverDestroyed<std::vector<PyObject*>>();
    const std::lock_guard held(lock);
    left.push_back(object);
}

}  // namespace

SharedObject shared(py::handle object) {
    return {Py_NewRef(object.ptr()), [](PyObject* held) {
                if (!interpreterAlive()) return leaveBehind(held);
                onInterpreter([held] {
                    entering([held] {
                        Py_DECREF(held);
                        return held;
                    });
                });
            }};
}

}  // namespace zvr::python
