#include "device/watch.h"

#include <atomic>
#include <unordered_set>

#include "core/engine/never_destroyed.h"

namespace zvr::python {

namespace {

std::unordered_set<PyObject*>& watchedNames() {
    static auto& names = neverDestroyed<std::unordered_set<PyObject*>>();
    return names;
}

}  // namespace

void Watch::watchNames(std::initializer_list<const char*> names) {
    for (const char* name : names) watchedNames().insert(interned(name));
}

bool Watch::watches(py::handle name) {
    if (PyUnicode_CheckExact(name.ptr()) == 0) return true;
    if (PyUnicode_CHECK_INTERNED(name.ptr()) != 0) return watchedNames().contains(name.ptr());
    PyObject* text = Py_NewRef(name.ptr());
    PyUnicode_InternInPlace(&text);
    const auto kept = py::reinterpret_steal<Object>(text);
    return watchedNames().contains(text);
}

void Watch::noteType(py::handle self) {
    PyTypeObject* const type = Py_TYPE(self.ptr());
    if (type == type_) return;
    types_.push_back(shared(reinterpret_cast<PyObject*>(type)));
    type_ = type;
}

unsigned Watch::versionNow() const noexcept {
    PyTypeObject* const type = type_;
    const bool valid =
        (std::atomic_ref(type->tp_flags).load(std::memory_order_relaxed) & Py_TPFLAGS_VALID_VERSION_TAG) != 0;
    return valid ? std::atomic_ref(type->tp_version_tag).load(std::memory_order_relaxed) : 0;
}

void Watch::touch(py::handle self) {
    noteType(self);
    touch();
}

void Watch::touch() noexcept {
    ++changes_;
    std::vector<std::pair<std::shared_ptr<void>, void (*)(void*)>> told;
    {
        const std::lock_guard lock(mutex_);
        std::erase_if(observers_, [](const Observer& observer) { return observer.who.expired(); });
        for (const Observer& observer : observers_) told.emplace_back(observer.who.lock(), observer.wake);
    }
    for (const auto& [who, wake] : told) {
        if (who) wake(who.get());
    }
}

}  // namespace zvr::python
