// zvr-sim-usb: USB models for the libusb of another process, without hardware or rights.
//
// A testbed of umockdev holds the files that a device has in /sys and /dev; its preload library shows them to the
// client, and brings each ioctl on a device's node to this program, which plays the kernel's side of it.
#include <arpa/inet.h>
#include <fcntl.h>
#include <getopt.h>
#include <glob.h>
#include <linux/usbdevice_fs.h>
#include <poll.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <umockdev.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <deque>
#include <filesystem>
#include <iostream>
#include <list>
#include <memory>
#include <mutex>
#include <sstream>
#include <system_error>
#include <utility>
#include <variant>

#include "core/splitter.h"
#include "device.h"

namespace zvr::sim {

namespace {

constexpr std::uint16_t vendor = 0x0483, product = 0x5750;
constexpr std::uint8_t endpointIn = 0x81, endpointOut = 0x01;
constexpr std::size_t packetSize = 64;
constexpr const char* preloadLibrary = "libumockdev-preload.so.0";
constexpr const char* kernelDriver = "usbtest";

struct BadRequest : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <class Object>
using Ref = std::unique_ptr<Object, Unref>;

class Descriptor {
public:
    explicit Descriptor(int fd) : fd_(fd) {
        if (fd < 0) throw std::system_error(errno, std::generic_category());
    }
    ~Descriptor() { close(fd_); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return fd_; }

private:
    int fd_;
};

std::string format(const char* pattern, auto... values) {
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(), pattern, values...);
    return text.data();
}

std::string hex(ByteView bytes) {
    std::string text;
    for (const int byte : bytes) text += format("%02X", byte);
    return text;
}

std::uint8_t low(std::uint16_t value) { return static_cast<std::uint8_t>(value & 0xFF); }
std::uint8_t high(std::uint16_t value) { return static_cast<std::uint8_t>(value >> 8); }

Bytes deviceDescriptor() {
    // USB 2.0, class by interface, 64 bytes on endpoint 0; string 2 is the product, 3 the serial number.
    return {18,   1,    0x00, 0x02, 0, 0, 0, 64, low(vendor), high(vendor), low(product), high(product),
            0x00, 0x02, 0,    2,    3, 1};
}

Bytes configurationDescriptor() {
    return {9, 2, 32,          0, 1,          1,    0, 0x80, 50,  // configuration 1, with one interface
            9, 4, 0,           0, 2,          0xFF, 0, 0,    0,   // interface 0 of the vendor's class
            7, 5, endpointIn,  2, packetSize, 0,    0,            // bulk
            7, 5, endpointOut, 2, packetSize, 0,    0};
}

Bytes stringDescriptor(std::string_view text) {
    Bytes bytes = {static_cast<std::uint8_t>(2 + 2 * text.size()), 3};
    for (const char c : text) {
        bytes.push_back(static_cast<std::uint8_t>(c));
        bytes.push_back(0);
    }
    return bytes;
}

// The node of a device is a pipe. The kernel reports a usbfs node as writable while there is a transfer to reap; a
// pipe is writable while it is not full, so that the same wait of the client works on it.
class Node {
public:
    explicit Node(const std::filesystem::path& path) : pipe_(make(path)) {
        fcntl(pipe_.get(), F_SETPIPE_SZ, 4096);
        setReady(false);
    }

    void setReady(bool ready) {
        std::array<char, 4096> filler{};
        if (ready) {
            while (read(pipe_.get(), filler.data(), filler.size()) > 0) continue;
        } else {
            while (write(pipe_.get(), filler.data(), filler.size()) > 0) continue;
        }
    }

private:
    static int make(const std::filesystem::path& path) {
        std::filesystem::create_directories(path.parent_path());
        if (mkfifo(path.c_str(), 0666) != 0) return -1;
        return open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    }

    Descriptor pipe_;
};

// A transfer of a client from its submission until it is reaped.
struct Transfer {
    UMockdevIoctlClient* client;
    Ref<UMockdevIoctlData> data;

    usbdevfs_urb& urb() const { return *reinterpret_cast<usbdevfs_urb*>(data->data); }
    ByteView bytes() const {
        return {static_cast<const std::uint8_t*>(urb().buffer), static_cast<std::size_t>(urb().buffer_length)};
    }
    void finish(int status, std::size_t count = 0) const {
        urb().status = status;
        urb().actual_length = static_cast<int>(count);
    }
    // Gives the client what fits of the bytes, behind what the buffer begins with.
    std::size_t fill(ByteView source, std::size_t offset = 0) const {
        const std::size_t count = std::min(source.size(), bytes().size() - offset);
        std::copy_n(source.begin(), count, static_cast<std::uint8_t*>(urb().buffer) + offset);
        return count;
    }
};

// One emulated device. The testbed's thread brings the ioctls, the main thread the control lines.
class UsbDevice {
public:
    UsbDevice(const Model& model, const std::string& serial, const std::filesystem::path& node, bool driver,
              bool verbose)
        : serial_(serial),
          device_(model, {serial, Identity().alias}),
          node_(node),
          hasDriver_(driver),
          bound_(driver),
          verbose_(verbose) {}

    const std::string& serial() const { return serial_; }
    const Model& model() const { return device_.model(); }

    // Answers an ioctl as the kernel does: a negative errno is a failure.
    long answer(UMockdevIoctlClient* client);
    void vanished(UMockdevIoctlClient* client);

    void unplug();
    void setStalled(bool stalled);
    std::string transfers();

private:
    static constexpr std::size_t mostRemembered = 16, mostRequests = 64;
    // A client that takes no replies is not listened to, so that what waits for it stays bounded.
    static constexpr std::size_t mostReplies = 4096;
    static constexpr int largestTransfer = 1 << 20;

    long submit(UMockdevIoctlClient* client, Ref<UMockdevIoctlData> data);
    long discard(UMockdevIoctlClient* client, std::uintptr_t address);
    long reap(UMockdevIoctlClient* client, UMockdevIoctlData* argument);
    long claim(UMockdevIoctlClient* client, unsigned interface);
    long disconnect();
    long connect();
    long disconnectAndClaim(UMockdevIoctlClient* client, const usbdevfs_disconnect_claim& wanted);
    void control(const Transfer& transfer);
    std::optional<Bytes> descriptor(std::uint16_t which);
    void receive(ByteView bytes);
    bool serve(const Transfer& transfer);
    void pump();
    void complete(Transfer transfer);
    void update() { node_.setReady(!completed_.empty()); }
    void reset();

    std::mutex mutex_;
    const std::string serial_;
    Device device_;
    Node node_;
    const bool hasDriver_;
    bool bound_;
    const bool verbose_;
    bool gone_ = false;
    bool stalled_ = false;
    UMockdevIoctlClient* claimer_ = nullptr;
    Splitter splitter_;
    std::deque<Bytes> replies_;
    std::list<Transfer> pending_, completed_;
    std::size_t outCount_ = 0;
    std::deque<std::string> out_;
    std::deque<std::string> requests_;
};

std::string nameOf(unsigned long request) {
    switch (request) {
        case USBDEVFS_CLAIMINTERFACE: return "CLAIMINTERFACE";
        case USBDEVFS_RELEASEINTERFACE: return "RELEASEINTERFACE";
        case USBDEVFS_CLEAR_HALT: return "CLEAR_HALT";
        case USBDEVFS_RESET: return "RESET";
        case USBDEVFS_RESETEP: return "RESETEP";
        case USBDEVFS_GETDRIVER: return "GETDRIVER";
        case USBDEVFS_IOCTL: return "IOCTL";
        case USBDEVFS_DISCONNECT_CLAIM: return "DISCONNECT_CLAIM";
        case USBDEVFS_SETINTERFACE: return "SETINTERFACE";
        case USBDEVFS_SETCONFIGURATION: return "SETCONFIGURATION";
        case USBDEVFS_GET_SPEED: return "GET_SPEED";
        case USBDEVFS_CONNECTINFO: return "CONNECTINFO";
        default: return format("0x%08lX", request);
    }
}

bool isTransfer(unsigned long request) {
    return request == USBDEVFS_SUBMITURB || request == USBDEVFS_DISCARDURB || request == USBDEVFS_REAPURB ||
           request == USBDEVFS_REAPURBNDELAY || request == USBDEVFS_GET_CAPABILITIES;
}

long UsbDevice::answer(UMockdevIoctlClient* client) {
    const unsigned long request = umockdev_ioctl_client_get_request(client);
    UMockdevIoctlData* argument = umockdev_ioctl_client_get_arg(client);
    const std::size_t size = _IOC_SIZE(request);
    // Fetched before the lock is taken, since a client may be slow to give it.
    Ref<UMockdevIoctlData> data(size > 0 ? umockdev_ioctl_data_resolve(argument, 0, size, nullptr) : nullptr);
    if (size > 0 && !data) return -EFAULT;
    const auto as = [&]<class Structure>(std::type_identity<Structure>) -> Structure& {
        return *reinterpret_cast<Structure*>(data->data);
    };
    const auto number = [&] { return as(std::type_identity<unsigned>()); };

    const std::lock_guard lock(mutex_);
    if (request == USBDEVFS_REAPURB || request == USBDEVFS_REAPURBNDELAY) return reap(client, data.get());
    if (gone_) return -ENODEV;
    if (!isTransfer(request)) {
        requests_.push_back(nameOf(request));
        if (requests_.size() > mostRequests) requests_.pop_front();
        if (verbose_) std::cerr << serial_ << " - " << requests_.back() << '\n';
    }
    switch (request) {
        case USBDEVFS_GET_CAPABILITIES:
            as(std::type_identity<__u32>()) = USBDEVFS_CAP_ZERO_PACKET | USBDEVFS_CAP_NO_PACKET_SIZE_LIM |
                                              USBDEVFS_CAP_BULK_SCATTER_GATHER | USBDEVFS_CAP_REAP_AFTER_DISCONNECT;
            return 0;
        case USBDEVFS_SUBMITURB: return submit(client, std::move(data));
        case USBDEVFS_DISCARDURB: return discard(client, *reinterpret_cast<std::uintptr_t*>(argument->data));
        case USBDEVFS_CLAIMINTERFACE: return claim(client, number());
        case USBDEVFS_RELEASEINTERFACE:
            if (number() != 0 || claimer_ != client) return -EINVAL;
            claimer_ = nullptr;
            return 0;
        case USBDEVFS_GETDRIVER: {
            auto& wanted = as(std::type_identity<usbdevfs_getdriver>());
            if (wanted.interface != 0) return -EINVAL;
            if (claimer_ == nullptr && !bound_) return -ENODATA;
            std::snprintf(wanted.driver, sizeof(wanted.driver), "%s", claimer_ != nullptr ? "usbfs" : kernelDriver);
            return 0;
        }
        case USBDEVFS_IOCTL: {
            const auto& inner = as(std::type_identity<usbdevfs_ioctl>());
            if (inner.ifno != 0) return -EINVAL;
            if (static_cast<unsigned>(inner.ioctl_code) == USBDEVFS_DISCONNECT) return disconnect();
            if (static_cast<unsigned>(inner.ioctl_code) == USBDEVFS_CONNECT) return connect();
            return -ENOTTY;
        }
        case USBDEVFS_DISCONNECT_CLAIM:
            return disconnectAndClaim(client, as(std::type_identity<usbdevfs_disconnect_claim>()));
        case USBDEVFS_CLEAR_HALT:
        case USBDEVFS_RESETEP: return number() == endpointIn || number() == endpointOut ? 0 : -ENOENT;
        case USBDEVFS_RESET: reset(); return 0;
        case USBDEVFS_SETCONFIGURATION:
            if (claimer_ != nullptr || bound_) return -EBUSY;
            return number() == 1 || number() + 1 <= 1 ? 0 : -EINVAL;  // 0 and -1 leave it unconfigured
        case USBDEVFS_SETINTERFACE: {
            const auto& wanted = as(std::type_identity<usbdevfs_setinterface>());
            return wanted.interface == 0 && wanted.altsetting == 0 ? 0 : -EINVAL;
        }
        case USBDEVFS_GET_SPEED: return 2;  // full speed
        default: return -ENOTTY;
    }
}

void UsbDevice::vanished(UMockdevIoctlClient* client) {
    const std::lock_guard lock(mutex_);
    const auto isIts = [&](const Transfer& transfer) { return transfer.client == client; };
    pending_.remove_if(isIts);
    completed_.remove_if(isIts);
    if (claimer_ == client) claimer_ = nullptr;
    update();
}

// Transfers under way end with the device; they can still be reaped.
void UsbDevice::unplug() {
    const std::lock_guard lock(mutex_);
    gone_ = true;
    for (const Transfer& transfer : pending_) transfer.finish(-ENODEV);
    completed_.splice(completed_.end(), pending_);
    update();
}

void UsbDevice::setStalled(bool stalled) {
    const std::lock_guard lock(mutex_);
    stalled_ = stalled;
}

long UsbDevice::submit(UMockdevIoctlClient* client, Ref<UMockdevIoctlData> data) {
    Transfer transfer{client, std::move(data)};
    const usbdevfs_urb& urb = transfer.urb();
    const bool isControl = urb.type == USBDEVFS_URB_TYPE_CONTROL;
    if (urb.buffer_length < (isControl ? 8 : 0) || urb.buffer_length > largestTransfer) return -EINVAL;
    if (isControl ? (urb.endpoint & 0x7F) != 0 : urb.endpoint != endpointIn && urb.endpoint != endpointOut) {
        return -ENOENT;
    }
    if (!isControl && urb.type != USBDEVFS_URB_TYPE_BULK) return -EINVAL;
    if (urb.buffer_length > 0) {
        const Ref<UMockdevIoctlData> buffer(umockdev_ioctl_data_resolve(
            transfer.data.get(), offsetof(usbdevfs_urb, buffer), static_cast<gsize>(urb.buffer_length), nullptr));
        if (!buffer) return -EFAULT;
    }
    if (isControl) {
        control(transfer);
        completed_.push_back(std::move(transfer));
        update();
        return 0;
    }
    // The kernel claims for a client that did not.
    if (const long refusal = claim(client, 0); refusal != 0) return refusal;
    pending_.push_back(std::move(transfer));
    pump();
    return 0;
}

long UsbDevice::discard(UMockdevIoctlClient* client, std::uintptr_t address) {
    const auto found = std::ranges::find_if(pending_, [&](const Transfer& transfer) {
        return transfer.client == client && transfer.data->client_addr == address;
    });
    // One that is complete keeps its bytes and is reaped with them.
    if (found == pending_.end()) return -EINVAL;
    found->finish(-ENOENT);
    completed_.splice(completed_.end(), pending_, found);
    update();
    return 0;
}

long UsbDevice::reap(UMockdevIoctlClient* client, UMockdevIoctlData* argument) {
    const auto found = std::ranges::find(completed_, client, &Transfer::client);
    if (found == completed_.end()) return gone_ ? -ENODEV : -EAGAIN;
    umockdev_ioctl_data_set_ptr(argument, 0, found->data.get());
    completed_.erase(found);
    update();
    return 0;
}

long UsbDevice::claim(UMockdevIoctlClient* client, unsigned interface) {
    if (interface != 0) return -EINVAL;
    if (claimer_ == client) return 0;
    if (claimer_ != nullptr || bound_) return -EBUSY;
    claimer_ = client;
    return 0;
}

long UsbDevice::disconnect() {
    if (claimer_ == nullptr && !bound_) return -ENODATA;
    claimer_ = nullptr;
    bound_ = false;
    return 0;
}

long UsbDevice::connect() {
    if (claimer_ != nullptr || bound_) return -EBUSY;
    bound_ = hasDriver_;
    return bound_ ? 1 : 0;
}

long UsbDevice::disconnectAndClaim(UMockdevIoctlClient* client, const usbdevfs_disconnect_claim& wanted) {
    if (wanted.interface != 0) return -EINVAL;
    if (claimer_ != nullptr || bound_) {
        const std::string_view driver = claimer_ != nullptr ? "usbfs" : kernelDriver;
        const bool named = driver == std::string_view(wanted.driver, strnlen(wanted.driver, sizeof(wanted.driver)));
        if ((wanted.flags & USBDEVFS_DISCONNECT_CLAIM_IF_DRIVER) != 0 && !named) return -EBUSY;
        if ((wanted.flags & USBDEVFS_DISCONNECT_CLAIM_EXCEPT_DRIVER) != 0 && named) return -EBUSY;
        disconnect();
    }
    return claim(client, wanted.interface);
}

std::optional<Bytes> UsbDevice::descriptor(std::uint16_t which) {
    switch (which) {
        case 0x0100: return deviceDescriptor();
        case 0x0200: return configurationDescriptor();
        case 0x0300: return Bytes{4, 3, 0x09, 0x04};  // strings are in US English
        case 0x0302: return stringDescriptor(device_.model().displayName);
        case 0x0303: return stringDescriptor(device_.identity.serial);
        default: return std::nullopt;
    }
}

// Endpoint 0: the setup packet comes before the data.
void UsbDevice::control(const Transfer& transfer) {
    constexpr std::size_t setupSize = 8;
    const ByteView setup = transfer.bytes().first(setupSize);
    const auto value = static_cast<std::uint16_t>(setup[2] | setup[3] << 8);
    const auto length = static_cast<std::size_t>(setup[6] | setup[7] << 8);
    const int request = setup[0] << 8 | setup[1];
    std::optional<Bytes> data;
    switch (request) {
        case 0x8006: data = descriptor(value); break;
        case 0x8008: data = Bytes{1}; break;  // the configuration
        case 0x810A: data = Bytes{0}; break;  // the alternate setting
        case 0x8000:
        case 0x8100:
        case 0x8200: data = Bytes{0, 0}; break;  // status
        case 0x0009:
        case 0x010B:
        case 0x0201: data = Bytes(); break;  // configuration, alternate setting, halt
        default: break;
    }
    if (!data) {
        transfer.finish(-EPIPE);
        return;
    }
    data->resize(std::min(data->size(), length));
    transfer.finish(0, transfer.fill(*data, setupSize));
}

void UsbDevice::receive(ByteView bytes) {
    ++outCount_;
    out_.push_back(hex(bytes));
    if (out_.size() > mostRemembered) out_.pop_front();
    if (verbose_) std::cerr << serial_ << " < " << out_.back() << '\n';
    splitter_.append(bytes);
    for (const Packet& request : splitter_.split()) {
        const auto data = device_.handle(request);
        if (!data || stalled_) {
            if (verbose_) std::cerr << serial_ << (data ? " ! stalled\n" : " ! unknown command\n");
            continue;
        }
        const Bytes frame = buildFrame(request.command, *data);
        if (verbose_) std::cerr << serial_ << " > " << hex(frame) << '\n';
        for (std::size_t from = 0; from < frame.size(); from += packetSize) {
            const ByteView piece = ByteView(frame).subspan(from, std::min(packetSize, frame.size() - from));
            replies_.emplace_back(piece.begin(), piece.end()).resize(packetSize);
        }
    }
}

// Whether the transfer is complete.
bool UsbDevice::serve(const Transfer& transfer) {
    if (transfer.urb().endpoint == endpointOut) {
        if (replies_.size() >= mostReplies) return false;
        receive(transfer.bytes());
        transfer.finish(0, transfer.bytes().size());
        return true;
    }
    if (replies_.empty()) return false;
    Bytes& next = replies_.front();
    const std::size_t count = transfer.fill(next);
    transfer.finish(0, count);
    if (count == next.size()) {
        replies_.pop_front();
    } else {
        next.erase(next.begin(), next.begin() + static_cast<std::ptrdiff_t>(count));
    }
    return true;
}

void UsbDevice::pump() {
    for (bool moved = true; moved;) {
        moved = false;
        for (auto next = pending_.begin(); next != pending_.end();) {
            const auto current = next++;
            if (!serve(*current)) continue;
            completed_.splice(completed_.end(), pending_, current);
            moved = true;
        }
    }
    update();
}

void UsbDevice::reset() {
    for (const Transfer& transfer : pending_) transfer.finish(-ESHUTDOWN);
    completed_.splice(completed_.end(), pending_);
    replies_.clear();
    splitter_ = Splitter();
    update();
}

std::string listOf(const std::deque<std::string>& texts) {
    std::string list;
    for (const std::string& text : texts) list += (list.empty() ? "\"" : ", \"") + text + "\"";
    return "[" + list + "]";
}

std::string UsbDevice::transfers() {
    const std::lock_guard lock(mutex_);
    std::ostringstream line;
    line << R"({"count": )" << outCount_ << R"(, "out": )" << listOf(out_) << R"(, "detached": )"
         << (hasDriver_ && !bound_ ? "true" : "false") << R"(, "claimed": )" << (claimer_ != nullptr ? "[0]" : "[]")
         << R"(, "requests": )" << listOf(requests_) << "}";
    return line.str();
}

// What ties a device to the objects of the testbed, which outlive the calls of this program.
struct Handle {
    std::shared_ptr<UsbDevice> device;
    UMockdevIoctlClient* client;
};

gboolean onIoctl(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer shared) {
    const auto& device = *static_cast<std::shared_ptr<UsbDevice>*>(shared);
    constexpr const char* key = "zvr-handle";
    if (g_object_get_data(G_OBJECT(client), key) == nullptr) {
        g_object_set_data_full(G_OBJECT(client), key, std::make_unique<Handle>(Handle{device, client}).release(),
                               [](gpointer data) {
                                   const std::unique_ptr<Handle> handle(static_cast<Handle*>(data));
                                   handle->device->vanished(handle->client);
                               });
    }
    const long result = device->answer(client);
    umockdev_ioctl_client_complete(client, result < 0 ? -1 : result, result < 0 ? static_cast<int>(-result) : 0);
    return TRUE;
}

// The devices that are plugged in, and the testbed that shows them.
class Bus {
public:
    Bus(bool driver, bool verbose) : testbed_(umockdev_testbed_new()), driver_(driver), verbose_(verbose) {
        const std::unique_ptr<char, decltype(&g_free)> root(umockdev_testbed_get_root_dir(testbed_.get()), g_free);
        root_ = root.get();
    }
    // Clients that outlive the bus see the devices go.
    ~Bus() {
        while (!plugged_.empty()) unplug(plugged_.front().device->serial());
    }
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;

    const std::string& root() const { return root_; }

    // MODEL or MODEL:SERIAL.
    void plug(std::string_view wanted);
    void unplug(std::string_view serial);
    UsbDevice& find(std::string_view serial) { return *entry(serial)->device; }
    std::string list() const;

private:
    struct Plugged {
        std::shared_ptr<UsbDevice> device;
        std::string path;
        std::string properties;
    };

    std::vector<Plugged>::iterator entry(std::string_view serial) {
        const auto found =
            std::ranges::find_if(plugged_, [&](const Plugged& one) { return one.device->serial() == serial; });
        if (found == plugged_.end())
            throw BadRequest("no device has the serial number \"" + std::string(serial) + "\"");
        return found;
    }
    void announce(const Plugged& one, const char* action);

    Ref<UMockdevTestbed> testbed_;
    const bool driver_, verbose_;
    std::string root_;
    std::vector<Plugged> plugged_;
    std::vector<Ref<UMockdevIoctlBase>> handlers_;  // of all devices ever; an address is not used again
    unsigned events_ = 0;
};

void Bus::plug(std::string_view wanted) {
    const auto colon = wanted.find(':');
    const std::string name(wanted.substr(0, colon));
    const Model* model = findModel(name);
    if (model == nullptr) throw BadRequest("no model is called " + name);
    if (model->link != Link::usb) throw BadRequest(name + " is not reached over USB; try zvr-sim " + name);
    const auto count = static_cast<unsigned>(handlers_.size());
    const std::string serial =
        colon == std::string_view::npos ? format("SIM%05u", count + 1) : std::string(wanted.substr(colon + 1));
    // It goes into JSON, into lines and onto the wire as it is.
    const bool plain = std::ranges::all_of(serial, [](char c) { return c > ' ' && c <= '~' && c != '"' && c != '\\'; });
    if (!plain || serial.empty() || serial.size() > 8) {
        throw BadRequest("\"" + serial + "\" is not a serial number of 1 to 8 plain characters");
    }
    for (const Plugged& other : plugged_) {
        if (other.device->serial() == serial) throw BadRequest("there is a device " + serial + " already");
    }

    constexpr unsigned perBus = 127;
    const unsigned bus = 1 + count / perBus, address = 1 + count % perBus, minor = (bus - 1) * 128 + address - 1;
    const std::string path = format("/devices/pci0000:00/0000:00:14.0/usb%u/%u-%u", bus, bus, address);
    const std::string node = format("/dev/bus/usb/%03u/%03u", bus, address);
    const std::string properties = "DEVNAME=" + node + "\nDEVTYPE=usb_device\nSUBSYSTEM=usb\nDRIVER=usb\nMAJOR=189\n" +
                                   format("MINOR=%u\nBUSNUM=%03u\nDEVNUM=%03u\nPRODUCT=%x/%x/200\nTYPE=0/0/0\n", minor,
                                          bus, address, vendor, product);
    Plugged one{std::make_shared<UsbDevice>(*model, serial, root_ + node, driver_, verbose_), path, properties};

    Ref<UMockdevIoctlBase> handler(umockdev_ioctl_base_new());
    g_signal_connect_data(
        handler.get(), "handle-ioctl", G_CALLBACK(onIoctl),
        std::make_unique<std::shared_ptr<UsbDevice>>(one.device).release(),
        [](gpointer data, GClosure*) {
            const std::unique_ptr<std::shared_ptr<UsbDevice>> last(static_cast<std::shared_ptr<UsbDevice>*>(data));
        },
        GConnectFlags{});
    umockdev_testbed_attach_ioctl(testbed_.get(), node.c_str(), handler.get(), nullptr);
    handlers_.push_back(std::move(handler));

    Bytes descriptors = deviceDescriptor();
    const Bytes configuration = configurationDescriptor();
    descriptors.insert(descriptors.end(), configuration.begin(), configuration.end());
    std::ostringstream description;
    description << "P: " << path << '\n';
    std::istringstream lines(properties);
    for (std::string line; std::getline(lines, line);) description << "E: " << line << '\n';
    const auto attribute = [&](const char* key, const auto& value) {
        description << "A: " << key << '=' << value << "\\n\n";
    };
    attribute("bConfigurationValue", 1);
    attribute("bDeviceClass", "00");
    attribute("bNumConfigurations", 1);
    attribute("bNumInterfaces", " 1");
    attribute("busnum", bus);
    attribute("dev", format("189:%u", minor));
    attribute("devnum", address);
    attribute("devpath", address);
    attribute("idProduct", format("%04x", product));
    attribute("idVendor", format("%04x", vendor));
    attribute("product", model->displayName);
    attribute("serial", serial);
    attribute("speed", 12);
    attribute("version", " 2.00");
    description << "H: descriptors=" << hex(descriptors) << '\n';
    GError* error = nullptr;
    if (umockdev_testbed_add_from_string(testbed_.get(), description.str().c_str(), &error) == FALSE) {
        const std::unique_ptr<GError, decltype(&g_error_free)> failure(error, g_error_free);
        throw std::runtime_error(failure->message);
    }
    plugged_.push_back(std::move(one));
    announce(plugged_.back(), "add");
}

void Bus::unplug(std::string_view serial) {
    const auto found = entry(serial);
    const Plugged gone = std::move(*found);
    plugged_.erase(found);
    gone.device->unplug();
    umockdev_testbed_remove_device(testbed_.get(), ("/sys" + gone.path).c_str());
    announce(gone, "remove");
}

// Sends the event that udev would send. The testbed's own way to do it works only in a process that sees the testbed
// as its system; this one does not.
void Bus::announce(const Plugged& one, const char* action) {
    struct Header {  // libudev's
        std::array<char, 8> prefix{"libudev"};
        std::uint32_t magic = htonl(0xFEEDCAFE);
        std::uint32_t headerSize = sizeof(Header), offset = sizeof(Header), length = 0;
        std::array<std::uint32_t, 4> filters{};  // for a filter in the kernel only
    };
    std::string text = format("ACTION=%s\nSEQNUM=%u\nDEVPATH=", action, ++events_) + one.path + '\n' + one.properties;
    std::ranges::replace(text, '\n', '\0');
    Header header;
    header.length = static_cast<std::uint32_t>(text.size());
    const std::string message = std::string(reinterpret_cast<const char*>(&header), sizeof(header)) + text;

    // Each client that waits for events has a socket of this name.
    glob_t listeners{};
    if (glob((root_ + "/event[0-9]*").c_str(), GLOB_NOSORT, nullptr, &listeners) == 0) {
        const Descriptor socket(::socket(AF_UNIX, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        for (std::size_t i = 0; i < listeners.gl_pathc; ++i) {
            sockaddr_un address{};
            address.sun_family = AF_UNIX;
            std::string(listeners.gl_pathv[i]).copy(address.sun_path, sizeof(address.sun_path) - 1);
            const auto sent = sendto(socket.get(), message.data(), message.size(), 0,
                                     reinterpret_cast<const sockaddr*>(&address), sizeof(address));
            if (sent < 0 && errno == ECONNREFUSED) unlink(address.sun_path);  // its client has gone
        }
    }
    globfree(&listeners);
}

std::string Bus::list() const {
    std::string text;
    for (const Plugged& one : plugged_) {
        text += (text.empty() ? "" : ", ") + std::string(R"({"model": ")") + std::string(one.device->model().name) +
                R"(", "serial": ")" + one.device->serial() + "\"}";
    }
    return "[" + text + "]";
}

struct UsbOptions {
    std::vector<std::string> devices;
    std::vector<char*> command;  // ends with a null pointer, unless there is none
    bool driver = false, verbose = false, stopWithInput = false;
};

std::string answerLine(Bus& bus, const std::string& line) {
    std::istringstream words(line);
    std::string verb, what, value, more;
    words >> verb >> what >> value >> more;
    try {
        if (!more.empty() || what.empty()) throw BadRequest("no such request");
        if (verb == "stall" && (value == "on" || value == "off")) {
            bus.find(what).setStalled(value == "on");
        } else if (!value.empty()) {
            throw BadRequest("no such request");
        } else if (verb == "plug") {
            bus.plug(what);
        } else if (verb == "unplug") {
            bus.unplug(what);
        } else if (verb == "transfers") {
            return bus.find(what).transfers();
        } else {
            throw BadRequest("no such request");
        }
    } catch (const BadRequest& refusal) {
        return std::string("error ") + refusal.what();
    }
    return "ok";
}

pid_t start(const UsbOptions& options, const sigset_t& restored) {
    gchar** variables = g_get_environ();  // with the testbed's own
    const char* others = g_environ_getenv(variables, "LD_PRELOAD");
    const std::string preload = (others != nullptr ? others + std::string(":") : "") + preloadLibrary;
    variables = g_environ_setenv(variables, "LD_PRELOAD", preload.c_str(), TRUE);
    const std::unique_ptr<gchar*, decltype(&g_strfreev)> environment(variables, g_strfreev);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigmask(&attributes, &restored);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    pid_t child = 0;
    const int failure =
        posix_spawnp(&child, options.command[0], nullptr, &attributes, options.command.data(), environment.get());
    posix_spawnattr_destroy(&attributes);
    if (failure != 0) throw std::system_error(failure, std::generic_category(), options.command[0]);
    return child;
}

// Runs until a signal, or the end of the input or of the command, ends it. The exit status.
int run(Bus& bus, const UsbOptions& options, const sigset_t& signals, const sigset_t& restored) {
    const Descriptor arrivals(signalfd(-1, &signals, SFD_CLOEXEC));
    const pid_t child = options.command.empty() ? 0 : start(options, restored);
    std::array<pollfd, 2> waits{{{arrivals.get(), POLLIN, 0}, {child == 0 ? STDIN_FILENO : -1, POLLIN, 0}}};
    std::string input;
    while (true) {
        if (poll(waits.data(), waits.size(), -1) < 0 && errno != EINTR)
            throw std::system_error(errno, std::generic_category());
        if (waits[0].revents != 0) {
            signalfd_siginfo arrived{};
            if (read(arrivals.get(), &arrived, sizeof(arrived)) != sizeof(arrived)) continue;
            if (child == 0) {
                if (arrived.ssi_signo != SIGCHLD) return 0;
                continue;
            }
            int status = 0;
            if (arrived.ssi_signo == SIGTERM || arrived.ssi_signo == SIGHUP) {
                kill(child, static_cast<int>(arrived.ssi_signo));
            } else if (waitpid(child, &status, WNOHANG) == child && (WIFEXITED(status) || WIFSIGNALED(status))) {
                return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
            }
        }
        if (waits[1].revents != 0) {
            std::array<char, 512> buffer{};
            const auto count = read(STDIN_FILENO, buffer.data(), buffer.size());
            if (count <= 0) {
                if (options.stopWithInput) return 0;
                waits[1].fd = -1;
                continue;
            }
            input.append(buffer.data(), static_cast<std::size_t>(count));
            for (std::size_t end; (end = input.find('\n')) != std::string::npos; input.erase(0, end + 1)) {
                std::cout << answerLine(bus, input.substr(0, end)) << std::endl;
            }
        }
    }
}

constexpr const char* usage = R"(usage: zvr-sim-usb MODEL[:SERIAL]... [options] [-- COMMAND ARGUMENTS...]

The device side of USB models, for the libusb of a program, without hardware. With a COMMAND it runs it, so that it
finds the devices on its bus, and ends with its exit status. Without one it prints one line of JSON with what such a
program needs in its environment, and serves until SIGTERM or SIGINT.

  --kernel-driver    a driver of the kernel has the devices until it is detached
  --stdin-stop       stop when standard input closes
  --verbose          log what the devices get and answer on standard error

Without a COMMAND, lines on standard input change what there is; each is answered by a line:
  plug MODEL[:SERIAL]     unplug SERIAL     stall SERIAL on|off     transfers SERIAL
)";

// What the command line asks for, or an exit status.
std::variant<UsbOptions, int> parse(int argc, char** argv) {
    UsbOptions options;
    char** const end = argv + argc;
    char** const mark = std::find(argv, end, std::string_view("--"));
    if (mark != end) options.command.assign(mark + 1, end + 1);
    enum { driver, stop, verbose, help };
    const std::array<option, 5> known{{{"kernel-driver", no_argument, nullptr, driver},
                                       {"stdin-stop", no_argument, nullptr, stop},
                                       {"verbose", no_argument, nullptr, verbose},
                                       {"help", no_argument, nullptr, help},
                                       {nullptr, 0, nullptr, 0}}};
    const int count = static_cast<int>(mark - argv);
    for (int chosen; (chosen = getopt_long(count, argv, "", known.data(), nullptr)) != -1;) {
        switch (chosen) {
            case driver: options.driver = true; break;
            case stop: options.stopWithInput = true; break;
            case verbose: options.verbose = true; break;
            case help: std::cout << usage; return 0;
            default: return 2;
        }
    }
    options.devices.assign(argv + optind, argv + count);
    const char* refusal = options.devices.empty()                     ? "a MODEL is wanted"
                          : mark != end && options.command.size() < 2 ? "a COMMAND is wanted after --"
                          : mark != end && options.stopWithInput      ? "--stdin-stop is not for a COMMAND"
                                                                      : nullptr;
    if (refusal == nullptr) return options;
    std::cerr << "zvr-sim-usb: " << refusal << '\n';
    return 2;
}

int serve(const UsbOptions& options) {
    // Blocked before the testbed starts its thread, which inherits it.
    sigset_t signals, restored;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGCHLD}) sigaddset(&signals, signal);
    sigprocmask(SIG_BLOCK, &signals, &restored);
    Bus bus(options.driver, options.verbose);
    for (const std::string& device : options.devices) bus.plug(device);
    if (options.command.empty() || options.verbose) {
        (options.command.empty() ? std::cout : std::cerr)
            << R"({"root": ")" << bus.root() << R"(", "preload": ")" << preloadLibrary << R"(", "devices": )"
            << bus.list() << R"(, "pid": )" << getpid() << "}" << std::endl;
    }
    return run(bus, options, signals, restored);
}

}  // namespace

}  // namespace zvr::sim

int main(int argc, char** argv) {
    const auto parsed = zvr::sim::parse(argc, argv);
    if (const int* status = std::get_if<int>(&parsed)) return *status;
    try {
        return zvr::sim::serve(std::get<zvr::sim::UsbOptions>(parsed));
    } catch (const zvr::sim::BadRequest& refusal) {
        std::cerr << "zvr-sim-usb: " << refusal.what() << '\n';
        return 2;
    } catch (const std::exception& failure) {
        std::cerr << "zvr-sim-usb: " << failure.what() << '\n';
        return 1;
    }
}
