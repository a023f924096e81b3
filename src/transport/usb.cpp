#include "transport/usb.h"

#include <array>
#include <thread>
#include <utility>

#include "core/wire/constants.h"
#include "core/wire/failures.h"

namespace zvr {

namespace {

constexpr unsigned readMilliseconds = 1;
// A read of the receive thread: long enough to cost little on an idle link.
constexpr unsigned patientMilliseconds = 50;
// How long the receive thread lets waiting callers read first.
constexpr std::chrono::milliseconds turnOfCallers{1};
// A device that accepts no data for this long is gone.
constexpr std::int64_t sendMilliseconds = 1000;

void check(int code) {
    if (code < 0) throw UsbError(code);
}

int codeOf(libusb_transfer_status status) {
    switch (status) {
        case LIBUSB_TRANSFER_COMPLETED: return LIBUSB_SUCCESS;
        case LIBUSB_TRANSFER_TIMED_OUT:
        case LIBUSB_TRANSFER_CANCELLED: return LIBUSB_ERROR_TIMEOUT;
        case LIBUSB_TRANSFER_STALL: return LIBUSB_ERROR_PIPE;
        case LIBUSB_TRANSFER_OVERFLOW: return LIBUSB_ERROR_OVERFLOW;
        case LIBUSB_TRANSFER_NO_DEVICE: return LIBUSB_ERROR_NO_DEVICE;
        default: return LIBUSB_ERROR_IO;
    }
}

// The session with the library. All devices share one; it ends with the last of them, and a new one enumerates the
// devices again. A forked child has a session of its own and leaves the parent's alone.
class Session {
public:
    explicit Session(std::shared_ptr<const UsbLibrary> usb) : library(std::move(usb)) {
        check(library->init(&context_));
    }
    ~Session() {
        if (!mark_.foreign()) library->exit(context_);
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    static std::shared_ptr<Session> of(const std::shared_ptr<const UsbLibrary>& library) {
        struct Current {
            std::mutex mutex;
            std::weak_ptr<Session> session;
        };
        static PerProcess<Current> sessions;
        Current& current = sessions.get();
        const std::lock_guard lock(current.mutex);
        auto session = current.session.lock();
        if (!session) current.session = session = std::make_shared<Session>(library);
        return session;
    }

    libusb_context* context() const { return context_; }

    const std::shared_ptr<const UsbLibrary> library;

private:
    const ProcessMark mark_;
    libusb_context* context_ = nullptr;
};

// The devices attached at one moment.
class DeviceList {
public:
    explicit DeviceList(const Session& session) : library_(*session.library) {
        const auto count = library_.get_device_list(session.context(), &first_);
        check(static_cast<int>(count));
        count_ = static_cast<std::size_t>(count);
    }
    ~DeviceList() { library_.free_device_list(first_, 1); }
    DeviceList(const DeviceList&) = delete;
    DeviceList& operator=(const DeviceList&) = delete;

    std::span<libusb_device* const> all() const { return {first_, count_}; }

private:
    const UsbLibrary& library_;
    libusb_device** first_ = nullptr;
    std::size_t count_ = 0;
};

bool isOurs(const UsbLibrary& library, libusb_device* device, libusb_device_descriptor& descriptor) {
    return library.get_device_descriptor(device, &descriptor) == 0 && descriptor.idVendor == USB_VID &&
           descriptor.idProduct == USB_PID;
}

}  // namespace

/// An open device; closed when its last user has left. In a forked child it is neither used nor closed.
class UsbClient::Handle {
public:
    Handle(std::shared_ptr<Session> session, libusb_device* device) : session_(std::move(session)) {
        check(library().open(device, &handle_));
    }
    ~Handle() {
        if (mark_.foreign()) return;
        if (claimed_) library().release_interface(handle_, interface_);
        library().close(handle_);
        closed_.set_value();
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    const UsbLibrary& library() const { return *session_->library; }
    std::shared_future<void> closed() { return closed_.get_future().share(); }

    std::string text(std::uint8_t index) const {
        std::array<unsigned char, 256> buffer{};
        const int length =
            index == 0 ? 0 : library().get_string_descriptor_ascii(handle_, index, buffer.data(), buffer.size());
        check(length);
        return {buffer.begin(), buffer.begin() + length};
    }

    void takeFromKernel([[maybe_unused]] int number) {
#ifdef __linux__
        if (library().kernel_driver_active(handle_, number) == 1)
            check(library().detach_kernel_driver(handle_, number));
#endif
        interface_ = number;
    }

    // Returns the number of bytes sent, including those of a transfer that timed out.
    std::size_t send(std::uint8_t* data, std::size_t length, unsigned milliseconds) {
        claim();
        int moved = 0;
        const int code =
            library().bulk_transfer(handle_, USB_EP_OUT, data, static_cast<int>(length), &moved, milliseconds);
        if (code != LIBUSB_ERROR_TIMEOUT || moved == 0) check(code);
        return static_cast<std::size_t>(moved);
    }

    // Reads are serialized, so that bytes are filed in the order in which they arrive. Bytes received before a timeout
    // or an interruption count; receiving none is no failure.
    template <class File>
    std::size_t receive(Reader reader, unsigned milliseconds, Bytes& buffer, File&& file) {
        claim();
        if (reader == Reader::thread && callers_ > 0) std::this_thread::sleep_for(turnOfCallers);
        const Caller caller(*this, reader);
        const std::lock_guard lock(reading_);
        buffer.resize(transferIn(reader, milliseconds, buffer));
        file(buffer);
        return buffer.size();
    }

    // Ends the receive thread's current read, or else its next one.
    void interrupt() {
        const std::lock_guard lock(mutex_);
        interrupted_ = true;
        if (patient_ != nullptr) library().cancel_transfer(patient_);
    }

private:
    // The first transfer claims the interface.
    void claim() {
        const std::lock_guard lock(mutex_);
        if (claimed_) return;
        check(library().claim_interface(handle_, interface_));
        claimed_ = true;
    }

    // A caller that wants to read: the receive thread gives way.
    class Caller {
    public:
        Caller(Handle& handle, Reader reader) : handle_(reader == Reader::caller ? &handle : nullptr) {
            if (handle_ == nullptr) return;
            ++handle_->callers_;
            handle_->interrupt();
        }
        ~Caller() {
            if (handle_ != nullptr) --handle_->callers_;
        }
        Caller(const Caller&) = delete;
        Caller& operator=(const Caller&) = delete;

    private:
        Handle* const handle_;
    };

    static void LIBUSB_CALL onCompleted(libusb_transfer* transfer) { *static_cast<int*>(transfer->user_data) = 1; }

    std::size_t transferIn(Reader reader, unsigned milliseconds, Bytes& buffer) {
        const auto release = [this](libusb_transfer* transfer) { library().free_transfer(transfer); };
        const std::unique_ptr<libusb_transfer, decltype(release)> transfer(library().alloc_transfer(0), release);
        if (!transfer) throw std::bad_alloc();
        const bool patient = reader == Reader::thread;
        int completed = 0;
        libusb_fill_bulk_transfer(transfer.get(), handle_, USB_EP_IN, buffer.data(), static_cast<int>(buffer.size()),
                                  onCompleted, &completed, milliseconds);
        {
            const std::lock_guard lock(mutex_);
            if (patient && std::exchange(interrupted_, false)) return 0;
            check(library().submit_transfer(transfer.get()));
            if (patient) patient_ = transfer.get();
        }
        while (completed == 0) {
            const int code = library().handle_events_completed(session_->context(), &completed);
            if (code < 0 && code != LIBUSB_ERROR_INTERRUPTED) library().cancel_transfer(transfer.get());
        }
        if (patient) {
            const std::lock_guard lock(mutex_);
            patient_ = nullptr;
            interrupted_ = false;
        }
        const int code = codeOf(transfer->status);
        if (code != LIBUSB_ERROR_TIMEOUT) check(code);
        return static_cast<std::size_t>(transfer->actual_length);
    }

    const ProcessMark mark_;
    const std::shared_ptr<Session> session_;
    libusb_device_handle* handle_ = nullptr;
    int interface_ = 0;
    std::mutex mutex_;
    bool claimed_ = false, interrupted_ = false;
    libusb_transfer* patient_ = nullptr;  // the read of the receive thread
    std::mutex reading_;
    std::atomic<int> callers_{0};
    std::promise<void> closed_;
};

namespace {

UsbIdentity identityOf(const UsbLibrary& library, libusb_device* device, std::string serial, std::string product) {
    return {library.get_bus_number(device), library.get_device_address(device), std::move(serial), std::move(product)};
}

}  // namespace

std::vector<UsbIdentity> listUsbDevices(const std::shared_ptr<const UsbLibrary>& library) {
    std::vector<UsbIdentity> found;
    if (!library) return found;
    const auto session = Session::of(library);
    const DeviceList devices(*session);
    for (libusb_device* device : devices.all()) {
        libusb_device_descriptor descriptor{};
        if (!isOurs(*library, device, descriptor)) continue;
        try {
            const UsbClient::Handle handle(session, device);
            found.push_back(
                identityOf(*library, device, handle.text(descriptor.iSerialNumber), handle.text(descriptor.iProduct)));
        } catch (const UsbError&) {
            // In use by another process, or unplugged meanwhile.
        }
    }
    return found;
}

UsbClient::UsbClient(const std::shared_ptr<const UsbLibrary>& library, std::optional<std::string> serialNumber) {
    if (!library) throw Failure(FailureId::USBConnectionError).noting("libusb-1.0 is not found");
    const auto session = Session::of(library);
    const DeviceList devices(*session);
    std::exception_ptr refusal;
    std::string others;
    for (libusb_device* device : devices.all()) {
        libusb_device_descriptor descriptor{};
        if (!isOurs(*library, device, descriptor)) continue;
        try {
            auto handle = std::make_shared<Handle>(session, device);
            std::string serial = handle->text(descriptor.iSerialNumber);
            if (serialNumber && serial != *serialNumber) {
                others += (others.empty() ? "" : ", ") + serial;
                continue;
            }
            identity_ = identityOf(*library, device, std::move(serial), handle->text(descriptor.iProduct));
            libusb_config_descriptor* config = nullptr;
            check(library->get_config_descriptor(device, 0, &config));
            configuration_ = config->bConfigurationValue;
            interface_ = config->interface->altsetting->bInterfaceNumber;
            library->free_config_descriptor(config);
            setPlace("USB " + identity_.serialNumber);
            handle->takeFromKernel(interface_);
            closed_ = handle->closed();
            handle_ = std::move(handle);
            return;
        } catch (const UsbError&) {
            refusal = std::current_exception();
        }
    }
    if (refusal && !serialNumber) std::rethrow_exception(refusal);
    Failure failure(FailureId::USBConnectionError);
    if (!refusal) throw std::move(failure).noting("devices attached: " + (others.empty() ? "none" : others));
    try {
        std::rethrow_exception(refusal);
    } catch (const UsbError&) {
        std::throw_with_nested(std::move(failure));
    }
}

UsbClient::~UsbClient() = default;

std::shared_ptr<UsbClient::Handle> UsbClient::opened() const {
    requireOwn();
    const std::lock_guard lock(mutex_);
    if (!handle_) throw UsbError(LIBUSB_ERROR_NO_DEVICE);
    return handle_;
}

template <class Transfer>
auto UsbClient::notingLoss(Transfer transfer) {
    try {
        return transfer();
    } catch (const UsbError& error) {
        if (error.code() != std::errc::no_such_device) throw;
        if (const auto when = end_.note(LIBUSB_ERROR_NO_DEVICE)) losses->tell(lossFailure(), *when);
        throw;
    }
}

ReadStatus UsbClient::read(Bytes& buffer, const InterruptCheck& /*onWait*/) {
    const auto handle = opened();
    const std::size_t count =
        notingLoss([&] { return handle->receive(Reader::caller, readMilliseconds, buffer, [](const Bytes&) {}); });
    return count == 0 ? ReadStatus::idle : ReadStatus::data;
}

ReadStatus UsbClient::receiveAs(Reader reader, std::size_t length, std::vector<Packet>& packets,
                                const InterruptCheck& /*onWait*/) {
    const bool isThread = reader == Reader::thread;
    const ReadStatus reading = readInto(reader, isThread ? patientMilliseconds : readMilliseconds, length, packets);
    if (reading == ReadStatus::idle && !isThread) throw UsbError(LIBUSB_ERROR_TIMEOUT);
    return reading;
}

std::optional<ReadStatus> UsbClient::receiveFor(const Wake* /*wake*/, Deadline until, std::size_t length,
                                                std::vector<Packet>& packets) {
    const Deadline longest = Clock::now() + std::chrono::milliseconds(patientMilliseconds);
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(std::min(until, longest) - Clock::now()).count();
    return readInto(Reader::thread, static_cast<unsigned>(std::max<std::int64_t>(left, 1)), length, packets);
}

ReadStatus UsbClient::readInto(Reader reader, unsigned milliseconds, std::size_t length, std::vector<Packet>& packets) {
    Bytes buffer(length);
    const auto handle = opened();
    const std::size_t count = notingLoss([&] {
        return handle->receive(reader, milliseconds, buffer, [&](const Bytes& bytes) {
            if (!bytes.empty()) packets = splitter.take(bytes);
        });
    });
    return count == 0 ? ReadStatus::idle : ReadStatus::data;
}

std::optional<std::error_code> UsbClient::loss() const {
    if (end_.reason() != 0) return std::make_error_code(std::errc::no_such_device);
    return std::nullopt;
}

void UsbClient::interrupt() noexcept {
    if (isForeign()) return;
    const std::lock_guard lock(mutex_);
    if (handle_) handle_->interrupt();
}

bool UsbClient::send(ByteView bytes, Deadline deadline, const InterruptCheck& /*onWait*/) {
    const auto handle = opened();
    const auto left = deadline == forever
                          ? sendMilliseconds
                          : std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    Bytes transfer(bytes.begin(), bytes.end());
    if (transfer.size() < USB_PKT_SIZE) transfer.resize(USB_PKT_SIZE);
    const auto milliseconds = static_cast<unsigned>(std::clamp<std::int64_t>(left, 1, sendMilliseconds));
    try {
        notingLoss([&] {
            const std::size_t moved = handle->send(transfer.data(), transfer.size(), milliseconds);
            const std::span<std::uint8_t> rest = std::span(transfer).subspan(moved);
            if (!rest.empty()) handle->send(rest.data(), rest.size(), sendMilliseconds);
        });
    } catch (const UsbError& failure) {
        if (!failure.timedOut()) throw;
        return false;
    }
    return true;
}

void UsbClient::close() noexcept {
    if (isForeign()) return;
    std::shared_ptr<Handle> dropped;
    {
        const std::lock_guard lock(mutex_);
        dropped.swap(handle_);
    }
    if (dropped) dropped->interrupt();
    changed();
}

}  // namespace zvr
