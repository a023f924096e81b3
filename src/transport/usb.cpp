#include "transport/usb.h"

#include <array>

#include "core/constants.h"
#include "core/failures.h"

namespace zvr {

namespace {

constexpr unsigned readMilliseconds = 1;
// A device that takes nothing for so long is gone.
constexpr std::int64_t sendMilliseconds = 1000;

void check(int code) {
    if (code < 0) throw UsbError(code);
}

// The session with the library. All devices share one; it ends with the last of them, and the next one sees afresh what
// is attached.
class Session {
public:
    explicit Session(std::shared_ptr<const UsbLibrary> usb) : library(std::move(usb)) {
        check(library->init(&context_));
    }
    ~Session() { library->exit(context_); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    static std::shared_ptr<Session> of(const std::shared_ptr<const UsbLibrary>& library) {
        static std::mutex mutex;
        static std::weak_ptr<Session> current;
        const std::lock_guard lock(mutex);
        auto session = current.lock();
        if (!session) current = session = std::make_shared<Session>(library);
        return session;
    }

    libusb_context* context() const { return context_; }

    const std::shared_ptr<const UsbLibrary> library;

private:
    libusb_context* context_ = nullptr;
};

// The devices that are attached at one moment.
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

/// An open device; closed when the last thread that uses it has left.
class UsbClient::Handle {
public:
    Handle(std::shared_ptr<Session> session, libusb_device* device) : session_(std::move(session)) {
        check(library().open(device, &handle_));
    }
    ~Handle() {
        if (claimed_) library().release_interface(handle_, interface_);
        library().close(handle_);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    const UsbLibrary& library() const { return *session_->library; }

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

    // The bytes that went over; with a timeout of 0 it has none. What a transfer that ran out of time has moved counts.
    int transfer(int endpoint, std::uint8_t* data, std::size_t length, unsigned milliseconds) {
        claim();
        int moved = 0;
        const int code = library().bulk_transfer(handle_, static_cast<unsigned char>(endpoint), data,
                                                 static_cast<int>(length), &moved, milliseconds);
        if (code != LIBUSB_ERROR_TIMEOUT || moved == 0) check(code);
        return moved;
    }

private:
    // The first transfer claims the interface.
    void claim() {
        const std::lock_guard lock(mutex_);
        if (claimed_) return;
        check(library().claim_interface(handle_, interface_));
        claimed_ = true;
    }

    const std::shared_ptr<Session> session_;
    libusb_device_handle* handle_ = nullptr;
    int interface_ = 0;
    std::mutex mutex_;
    bool claimed_ = false;
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
            // It belongs to somebody else, or went away meanwhile.
        }
    }
    return found;
}

UsbClient::UsbClient(const std::shared_ptr<const UsbLibrary>& library, std::optional<std::string> serialNumber) {
    if (!library) throw Failure(FailureId::USBConnectionError);
    const auto session = Session::of(library);
    const DeviceList devices(*session);
    std::exception_ptr refusal;
    for (libusb_device* device : devices.all()) {
        libusb_device_descriptor descriptor{};
        if (!isOurs(*library, device, descriptor)) continue;
        try {
            auto handle = std::make_shared<Handle>(session, device);
            std::string serial = handle->text(descriptor.iSerialNumber);
            if (serialNumber && serial != *serialNumber) continue;
            identity_ = identityOf(*library, device, std::move(serial), handle->text(descriptor.iProduct));
            libusb_config_descriptor* config = nullptr;
            check(library->get_config_descriptor(device, 0, &config));
            configuration_ = config->bConfigurationValue;
            interface_ = config->interface->altsetting->bInterfaceNumber;
            library->free_config_descriptor(config);
            handle->takeFromKernel(interface_);
            handle_ = std::move(handle);
            return;
        } catch (const UsbError&) {
            refusal = std::current_exception();
        }
    }
    if (refusal && !serialNumber) std::rethrow_exception(refusal);
    throw Failure(FailureId::USBConnectionError);
}

UsbClient::~UsbClient() = default;

std::shared_ptr<UsbClient::Handle> UsbClient::opened() const {
    const std::lock_guard lock(mutex_);
    if (!handle_) throw UsbError(LIBUSB_ERROR_NO_DEVICE);
    return handle_;
}

Reading UsbClient::read(Bytes& buffer, const Attend& /*attend*/) {
    std::size_t count = 0;
    try {
        count = static_cast<std::size_t>(opened()->transfer(USB_EP_IN, buffer.data(), buffer.size(), readMilliseconds));
    } catch (const UsbError& failure) {
        if (!failure.timedOut()) throw;
    }
    buffer.resize(count);
    return count == 0 ? Reading::idle : Reading::data;
}

bool UsbClient::send(ByteView bytes, Deadline deadline, const Attend& /*attend*/) {
    const auto handle = opened();
    const auto left = deadline == forever
                          ? sendMilliseconds
                          : std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    Bytes transfer(bytes.begin(), bytes.end());
    if (transfer.size() < USB_PKT_SIZE) transfer.resize(USB_PKT_SIZE);
    const auto milliseconds = static_cast<unsigned>(std::clamp<std::int64_t>(left, 1, sendMilliseconds));
    try {
        const int moved = handle->transfer(USB_EP_OUT, transfer.data(), transfer.size(), milliseconds);
        const std::span<std::uint8_t> rest = std::span(transfer).subspan(static_cast<std::size_t>(moved));
        if (!rest.empty()) handle->transfer(USB_EP_OUT, rest.data(), rest.size(), sendMilliseconds);
    } catch (const UsbError& failure) {
        if (!failure.timedOut()) throw;
        return false;
    }
    return true;
}

void UsbClient::abandon() noexcept {
    const std::lock_guard lock(mutex_);
    handle_.reset();
}

}  // namespace zvr
