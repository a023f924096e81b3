#include "device/sockets.h"

#include <sys/socket.h>

#include "python/arguments.h"
#include "python/raising.h"
#include "python/values.h"

namespace zvr::python {

namespace {

const Parameter bytesParameter{"data", "Sequence[int]", "byte values"};
const Parameter level{"level", "int", "level of the option"};
const Parameter option{"optname", "int", "number of the option"};

// Whether a Python exception is a timeout of a read.
bool isTimeOut(const py::error_already_set& error) {
    return error.matches(PyExc_TimeoutError) || error.matches(PyExc_BlockingIOError);
}

// A user's object in place of the socket. It is kept in the client's dictionary, where the garbage collector sees it,
// and looked up at each call.
class PythonSocket final : public Socket {
public:
    PythonSocket(SharedObject client, const SocketSteps& steps) : client_(std::move(client)), steps_(steps) {}

    /// Null if the client is gone.
    Object object() const {
        const Object client = callObject(client_.get());
        if (client.is_none()) return {};
        PyObject* const found = PyDict_GetItemWithError(dictionaryOf(client).ptr(), interned("socket"));
        return found == nullptr ? Object() : borrow(found);
    }

    ReadStatus read(Bytes& buffer, const InterruptCheck& /*onWait*/) override {
        const WithGil acquired;
        const Object held = present();
        buffer = bytesOf(callMethod(held, steps_.receive, py::int_(buffer.size())));
        return buffer.empty() ? ReadStatus::ended : ReadStatus::data;
    }

    ReadStatus receive(Reader reader, std::size_t length, SharedSplitter& splitter, std::vector<Packet>& packets,
                       const InterruptCheck& onWait) override {
        Bytes buffer(length);
        const ReadStatus reading = reader == Reader::caller ? read(buffer, onWait) : readQuietly(buffer);
        if (reading == ReadStatus::data) packets = splitter.take(buffer);
        return reading;
    }

    bool send(ByteView bytes, Deadline /*deadline*/, const InterruptCheck& /*onWait*/) override {
        const WithGil acquired;
        callMethod(present(), steps_.send, toBytes(bytes));
        return true;
    }

    void setTimeout(double seconds) override {
        if (steps_.setTimeout == nullptr) return;
        const WithGil acquired;
        callMethod(present(), steps_.setTimeout,
                   std::isinf(seconds) ? Object(py::none()) : Object(py::float_(seconds)));
    }

    void interrupt() noexcept override {}

    void shutDown() override {
        const WithGil acquired;
        const Object held = present();
        try {
            if (steps_.setTimeout != nullptr) callMethod(held, "shutdown", py::int_(int{SHUT_RDWR}));
            callMethod(held, "close");
        } catch (const py::error_already_set& error) {
            if (!error.matches(PyExc_OSError)) throw;
            throw std::system_error(std::make_error_code(std::errc::io_error));
        }
        ended_ = true;
    }

    // Wakes its readers; the object itself belongs to the user.
    void close(Deadline /*deadline*/) noexcept override {
        if (ended_ || steps_.setTimeout == nullptr) return;
        onInterpreter([this] {
            try {
                if (const Object held = object()) callMethod(held, "shutdown", py::int_(int{SHUT_RDWR}));
            } catch (const py::error_already_set&) {
                // It is not connected any more, or not a real socket.
            }
        });
    }

private:
    Object present() const {
        Object held = object();
        if (!held) throw std::system_error(std::make_error_code(std::errc::not_connected));
        return held;
    }

    // Python exceptions must not escape on the receive thread.
    ReadStatus readQuietly(Bytes& buffer) {
        ReadStatus reading = ReadStatus::ended;
        onInterpreter([&] {
            try {
                if (const Object held = object()) {
                    buffer = bytesOf(callMethod(held, steps_.receive, py::int_(buffer.size())));
                    if (!buffer.empty()) reading = ReadStatus::data;
                }
            } catch (const py::error_already_set& error) {
                reading = isTimeOut(error) ? ReadStatus::idle : ReadStatus::failed;
            } catch (const std::exception&) {
                reading = ReadStatus::failed;
            }
        });
        return reading;
    }

    const SharedObject client_;
    const SocketSteps& steps_;
    std::atomic<bool> ended_{false};
};

Object enumeration(const char* type, int value) { return callObject(pythonObject("socket", type), py::int_(value)); }

Object nameOf(const SocketName& name) { return py::make_tuple(name.first, name.second); }

double timeoutOf(const Object& value) {
    if (value.is_none()) return std::numeric_limits<double>::infinity();
    const double seconds = argument<Seconds>(value, "timeout");
    if (!(seconds >= 0)) throw std::invalid_argument("a timeout is not negative");
    return seconds;
}

Object timeoutObject(double seconds) { return std::isinf(seconds) ? Object(py::none()) : Object(py::float_(seconds)); }

Object receiveOnce(const std::shared_ptr<SystemSocket>& socket, const Object& most) {
    Bytes buffer(lengthOf(most, "bufsize"));
    if (buffer.empty()) return toBytes(buffer);
    const ReadStatus reading = blocking([&](const InterruptCheck& onWait) { return socket->read(buffer, onWait); });
    return toBytes(reading == ReadStatus::data ? buffer : Bytes());
}

}  // namespace

void defineSocket(Package& package) {
    const auto type = py::class_<SystemSocket, std::shared_ptr<SystemSocket>>(
        package.module(), "Socket", "The socket or serial line of a client; made by its connect or bind.");
    const Returns address{"tuple[str, int]"};
    const Raises socketRaises{"OSError: the socket's error"};
    ClassMaker(type)
        .property({"family", "socket.AddressFamily", "Its address family."},
                  [](py::handle self) { return enumeration("AddressFamily", native<SystemSocket>(self)->family()); })
        .property({"type", "socket.SocketKind", "Stream or datagram."},
                  [](py::handle self) { return enumeration("SocketKind", native<SystemSocket>(self)->type()); })
        .property({"timeout", "float | None", "Seconds that a read or a send waits; None for no limit."},
                  [](py::handle self) { return timeoutObject(native<SystemSocket>(self)->timeout()); })
        .method({.name = "gettimeout",
                 .doc = "Seconds that a read or a send waits; None for no limit.",
                 .returns = {"float | None"},
                 .body = [](py::handle self) { return timeoutObject(native<SystemSocket>(self)->timeout()); }})
        .method({.name = "settimeout",
                 .parameters = {{"value", "float | None", "seconds of later reads and sends; None for no limit"}},
                 .doc = "Sets how long a read or a send waits.",
                 .body = [](py::handle self,
                            const Object& value) { native<SystemSocket>(self)->setTimeout(timeoutOf(value)); }})
        .method({.name = "fileno",
                 .doc = "The descriptor; -1 once it is closed.",
                 .returns = {"int"},
                 .body = [](py::handle self) { return native<SystemSocket>(self)->fileno(); }})
        .method({.name = "getsockname",
                 .doc = "Address and port of this end.",
                 .returns = address,
                 .raises = socketRaises,
                 .body = [](py::handle self) { return nameOf(native<SystemSocket>(self)->localName()); }})
        .method({.name = "getpeername",
                 .doc = "Address and port of the other end.",
                 .returns = address,
                 .raises = socketRaises,
                 .body = [](py::handle self) { return nameOf(native<SystemSocket>(self)->peerName()); }})
        .method(
            {.name = "recv",
             .parameters = {{"bufsize", "int", "most bytes to read"}},
             .doc = "Reads once.",
             .returns = {"bytes", "what came; nothing at the end of the stream", "the device"},
             .raises = socketRaises,
             .body = [](py::handle self, const Object& most) { return receiveOnce(native<SystemSocket>(self), most); }})
        .method({.name = "send",
                 .parameters = {bytesParameter},
                 .doc = "Sends what there is room for.",
                 .returns = {"int", "how many bytes went", "the system"},
                 .raises = socketRaises,
                 .body =
                     [](py::handle self, const Object& data) {
                         const auto socket = native<SystemSocket>(self);
                         const Bytes bytes = bytesOf(data);
                         return blocking([&](const InterruptCheck& onWait) { return socket->sendSome(bytes, onWait); });
                     }})
        .method({.name = "sendall",
                 .parameters = {bytesParameter},
                 .doc = "Sends all bytes.",
                 .raises = socketRaises,
                 .body =
                     [](py::handle self, const Object& data) {
                         const auto socket = native<SystemSocket>(self);
                         const Bytes bytes = bytesOf(data);
                         const bool sent = blocking(
                             [&](const InterruptCheck& onWait) { return socket->send(bytes, forever, onWait); });
                         if (!sent) throw std::system_error(std::make_error_code(std::errc::timed_out));
                     }})
        .method({.name = "getsockopt",
                 .parameters = {level, option, {"buflen", "int", "bytes of the value; 0 for a number", "0"}},
                 .doc = "Reads an option.",
                 .returns = {"int | bytes", "its value", "the system"},
                 .raises = socketRaises,
                 .body = [](py::handle self, const Object& at, const Object& name, const Object& size) -> Object {
                     const auto wanted = argument<int>(size, "buflen");
                     if (wanted < 0 || wanted > 1024) throw std::invalid_argument("buflen is 0 to 1024");
                     const Bytes value = native<SystemSocket>(self)->option(
                         argument<int>(at, "level"), argument<int>(name, "optname"),
                         wanted == 0 ? sizeof(int) : static_cast<std::size_t>(wanted));
                     if (wanted != 0) return toBytes(value);
                     int number = 0;
                     std::memcpy(&number, value.data(), std::min(value.size(), sizeof number));
                     return py::int_(number);
                 }})
        .method({.name = "setsockopt",
                 .parameters = {level, option, {"value", "int | bytes", "the new value"}},
                 .doc = "Sets an option.",
                 .raises = socketRaises,
                 .body =
                     [](py::handle self, const Object& at, const Object& name, const Object& value) {
                         Bytes bytes;
                         if (PyBytes_Check(value.ptr()) != 0) {
                             bytes = bytesOf(value);
                         } else {
                             const int number = argument<int>(value, "value");
                             bytes.resize(sizeof number);
                             std::memcpy(bytes.data(), &number, sizeof number);
                         }
                         native<SystemSocket>(self)->setOption(argument<int>(at, "level"),
                                                               argument<int>(name, "optname"), bytes);
                     }})
        .method({.name = "shutdown",
                 .parameters = {{"how", "int", "0 for reads, 1 for sends, 2 for both"}},
                 .doc = "Ends the reads or the sends of all threads.",
                 .raises = socketRaises,
                 .body = [](py::handle self,
                            const Object& how) { native<SystemSocket>(self)->shutDown(argument<int>(how, "how")); }})
        .method({.name = "close",
                 .doc = "Closes it, as soon as no other thread is inside one of its calls.",
                 .body = [](py::handle self) {
                     const auto socket = native<SystemSocket>(self);
                     const WithoutGil released;
                     socket->close(Clock::now());
                 }});
}

std::size_t lengthOf(py::handle most, const char* name) {
    constexpr std::int64_t largest = 1 << 20;
    const auto length = argument<std::int64_t>(most, name);
    if (length < 0) throw std::invalid_argument(std::string(name) + " is negative");
    return static_cast<std::size_t>(std::min(length, largest));
}

void requireField(py::handle self, const char* field) {
    if (PyDict_GetItemWithError(dictionaryOf(self).ptr(), interned(field)) == Py_Ellipsis) {
        throw py::attribute_error(std::string("the client has no ") + field);
    }
}

void restoreField(py::handle self, const char* field) {
    if (PyDict_DelItem(dictionaryOf(self).ptr(), interned(field)) != 0) PyErr_Clear();
}

void addDeleter(py::handle type, const char* field) {
    const auto remove = [field](const py::handle& self) {
        requireField(self, field);
        dictionaryOf(self)[py::handle(interned(field))] = py::ellipsis();
    };
    const Object property = attribute(type, field);
    py::setattr(type, field, callMethod(property, "deleter", py::cpp_function(remove)));
}

Object socketOf(py::handle self, const std::shared_ptr<SocketClient>& client) {
    requireField(self, "socket");
    const auto socket = client->socket();
    if (const auto* foreign = dynamic_cast<const PythonSocket*>(socket.get())) {
        Object held = foreign->object();
        return held ? held : Object(py::int_(0));
    }
    const auto ours = std::dynamic_pointer_cast<SystemSocket>(socket);
    return ours ? py::cast(ours) : Object(py::int_(0));
}

void setSocket(py::handle self, const std::shared_ptr<SocketClient>& client, const Object& value,
               const SocketSteps& steps) {
    const bool isNumber = PyLong_Check(value.ptr()) != 0 && py::int_(0).equal(value);
    std::shared_ptr<Socket> socket = isNumber ? nullptr : nativeOrNothing<SystemSocket>(value);
    if (socket || isNumber) {
        restoreField(self, "socket");
    } else {
        dictionaryOf(self)[py::handle(interned("socket"))] = value;
        const Object client = callObject(pythonObject("weakref", "ref"), self);
        socket = std::make_shared<PythonSocket>(shared(client), steps);
    }
    const WithoutGil released;
    client->replaceSocket(std::move(socket));
}

}  // namespace zvr::python
