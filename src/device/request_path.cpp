#include "device/request_path.h"

#include "python/operation.h"
#include "python/values.h"

namespace zvr::python {

namespace {

// Whether attributes are looked up in the usual way, and set by the library's own setters (an operation of devices, a
// slot of clients), so that Watch sees all changes.
bool hasPlainAttributes(py::handle object) {
    const PyTypeObject* const type = Py_TYPE(object.ptr());
    const Object setter = attribute(py::type::of(object), "__setattr__");
    const bool isOwnSlot =
        Py_IS_TYPE(setter.ptr(), &PyWrapperDescr_Type) != 0 && type->tp_setattro != PyObject_GenericSetAttr;
    return type->tp_getattro == PyObject_GenericGetAttr && (isOwnSlot || isOurOperation(setter));
}

}  // namespace

std::shared_ptr<const RequestPath> RequestPath::of(py::handle self) {
    auto runtime = runtimeOrNothing(self);
    if (!runtime) return nullptr;
    runtime->requireOwn();
    std::shared_ptr<const RequestPath>& kept = runtime->requestPath;
    if (kept && kept->holds()) return kept;
    kept = nullptr;
    auto found = find(self, runtime);
    if (found && found->seen_.version != 0 && found->clientSeen_.version != 0 && hasPlainAttributes(self) &&
        hasPlainAttributes(attribute(self, "client_cmd"))) {
        kept = found;
    }
    return found;
}

bool RequestPath::holds() const {
    const auto owner = runtime_.lock();
    return owner && !owner->watch->changed(seen_) && client->steps() == clientSteps_ &&
           !clientWatch_->changed(clientSeen_);
}

std::shared_ptr<const RequestPath> RequestPath::find(py::handle self, const std::shared_ptr<DeviceRuntime>& runtime) {
    auto path = std::make_shared<RequestPath>();
    const std::uint64_t changes = runtime->watch->changes();
    const Object client = attributeOrNothing(self, "client_cmd");
    path->client = nativeOrNothing<Client>(client);
    path->pool = nativeOrNothing<EchoPool>(attributeOrNothing(self, "data_pool_echo"));
    if (!path->client || !path->pool) return nullptr;
    path->clientSteps_ = path->client->steps();
    path->clientWatch_ = std::make_unique<const Watch>(client);
    if (!hasOwnMethod(client, "sendPacket") || !hasOwnMethod(self, "_preparePacket")) return nullptr;
    path->blocking = hasOwnMethod(self, "_echoPacket") && hasOwnMethod(self, "_getReplyFromPool");
    path->awaitable = hasOwnMethod(self, "_echoPacket_async") && hasOwnMethod(self, "_getReplyFromPool_async");
    path->retries = path->blocking && hasOwnMethod(self, "_echoPacketWithRetry");
    const Object serialize = attributeOrNothing(self, "serialize");
    path->serialize = serialize && truthOf(serialize);
    path->clientSeen_ = path->clientWatch_->look();
    path->seen_ = runtime->watch->look();
    path->seen_.changes = changes;
    path->runtime_ = runtime;
    path->receiver = runtime->commands();
    return path;
}

}  // namespace zvr::python
