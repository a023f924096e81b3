#include "links/usb_device.h"

#include <fcntl.h>
#include <linux/usb/ch9.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iostream>
#include <sstream>

namespace zvr::sim {

namespace {

constexpr std::uint8_t endpointIn = 0x81, endpointOut = 0x01;
constexpr std::size_t packetSize = 64;
constexpr const char* kernelDriver = "usbtest";

std::uint8_t low(std::uint16_t value) { return static_cast<std::uint8_t>(value & 0xFF); }
std::uint8_t high(std::uint16_t value) { return static_cast<std::uint8_t>(value >> 8); }

Bytes deviceDescriptor() {
    // USB 2.0, class by interface, 64 bytes on endpoint 0; string 2 is the product, 3 the serial number.
    return {18,   1,    0x00, 0x02, 0, 0, 0, 64, low(usbVendor), high(usbVendor), low(usbProduct), high(usbProduct),
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

std::string listOf(const std::deque<std::string>& texts) {
    std::string list;
    for (const std::string& text : texts) list += (list.empty() ? "\"" : ", \"") + text + "\"";
    return "[" + list + "]";
}

int makePipe(const std::filesystem::path& path) {
    std::filesystem::create_directories(path.parent_path());
    if (mkfifo(path.c_str(), 0666) != 0) return -1;
    return open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
}

// The client's memory of a transfer.
template <class Structure>
Structure& as(const Ref<UMockdevIoctlData>& data) {
    return *reinterpret_cast<Structure*>(data->data);
}

}  // namespace

std::string hex(ByteView bytes) {
    std::string text;
    for (const int byte : bytes) text += format("%02X", byte);
    return text;
}

Bytes usbDescriptors() {
    Bytes all = deviceDescriptor();
    const Bytes configuration = configurationDescriptor();
    all.insert(all.end(), configuration.begin(), configuration.end());
    return all;
}

Node::Node(const std::filesystem::path& path) : pipe_(makePipe(path)) {
    fcntl(pipe_.get(), F_SETPIPE_SZ, 4096);
    setReady(false);
}

void Node::setReady(bool ready) {
    std::array<char, 4096> filler{};
    if (ready) {
        while (read(pipe_.get(), filler.data(), filler.size()) > 0) continue;
    } else {
        while (write(pipe_.get(), filler.data(), filler.size()) > 0) continue;
    }
}

void UsbDevice::note(unsigned long request) {
    const std::lock_guard lock(mutex_);
    if (gone_ || isTransfer(request)) return;
    requests_.push_back(nameOf(request));
    if (requests_.size() > mostRequests) requests_.pop_front();
    if (verbose_) std::cerr << serial_ << " - " << requests_.back() << '\n';
}

UsbDevice::UsbDevice(const Model& model, const std::string& serial, const std::filesystem::path& node, bool driver,
                     const Outside& outside, bool verbose)
    : serial_(serial),
      device_(model, {serial, Identity().alias}, {}, outside.peers),
      node_(node),
      hasDriver_(driver),
      bound_(driver),
      verbose_(verbose) {
    device_.signals = outside.signals;
    device_.sink.provide({this, [](UsbDevice*) {}});
    device_.scheduler.attach([this] { earlier_.notify_one(); });
    clockwork_ = std::jthread([this](const std::stop_token& stopped) { runScheduler(stopped); });
}

void UsbDevice::runScheduler(const std::stop_token& stopped) {
    std::unique_lock lock(mutex_);
    while (!stopped.stop_requested() && !gone_) {
        const auto next = device_.scheduler.next();
        const auto changed = [&] { return gone_ || device_.scheduler.next() != next; };
        if (!next) {
            earlier_.wait(lock, stopped, changed);
        } else if (*next > Scheduler::Clock::now()) {
            earlier_.wait_until(lock, stopped, *next, changed);
        } else {
            device_.scheduler.run();
            pump();
        }
    }
}

long UsbDevice::answer(UMockdevIoctlClient* client) {
    const unsigned long request = umockdev_ioctl_client_get_request(client);
    UMockdevIoctlData* argument = umockdev_ioctl_client_get_arg(client);
    const std::size_t size = _IOC_SIZE(request);
    Ref<UMockdevIoctlData> data(size > 0 ? umockdev_ioctl_data_resolve(argument, 0, size, nullptr) : nullptr);
    if (size > 0 && !data) return -EFAULT;
    const std::lock_guard lock(mutex_);
    if (request == USBDEVFS_REAPURB || request == USBDEVFS_REAPURBNDELAY) return reap(client, data.get());
    if (gone_) return -ENODEV;
    switch (request) {
        case USBDEVFS_GET_CAPABILITIES:
            as<__u32>(data) = USBDEVFS_CAP_ZERO_PACKET | USBDEVFS_CAP_NO_PACKET_SIZE_LIM |
                              USBDEVFS_CAP_BULK_SCATTER_GATHER | USBDEVFS_CAP_REAP_AFTER_DISCONNECT;
            return 0;
        case USBDEVFS_SUBMITURB: return submit(client, std::move(data));
        case USBDEVFS_DISCARDURB: return discard(client, *reinterpret_cast<std::uintptr_t*>(argument->data));
        case USBDEVFS_CLAIMINTERFACE: return claim(client, as<unsigned>(data));
        case USBDEVFS_RELEASEINTERFACE: return as<unsigned>(data) == 0 && claimer_ == client ? disconnect() : -EINVAL;
        case USBDEVFS_GETDRIVER: {
            auto& wanted = as<usbdevfs_getdriver>(data);
            if (wanted.interface != 0) return -EINVAL;
            if (claimer_ == nullptr && !bound_) return -ENODATA;
            std::snprintf(wanted.driver, sizeof(wanted.driver), "%s", claimer_ != nullptr ? "usbfs" : kernelDriver);
            return 0;
        }
        case USBDEVFS_IOCTL: {
            const auto& inner = as<usbdevfs_ioctl>(data);
            if (inner.ifno != 0) return -EINVAL;
            if (static_cast<unsigned>(inner.ioctl_code) == USBDEVFS_DISCONNECT) return disconnect();
            if (static_cast<unsigned>(inner.ioctl_code) == USBDEVFS_CONNECT) return connect();
            return -ENOTTY;
        }
        case USBDEVFS_DISCONNECT_CLAIM: return disconnectAndClaim(client, as<usbdevfs_disconnect_claim>(data));
        case USBDEVFS_CLEAR_HALT:
        case USBDEVFS_RESETEP:
            if (as<unsigned>(data) != endpointIn && as<unsigned>(data) != endpointOut) return -ENOENT;
            return claim(client, 0);
        case USBDEVFS_RESET: reset(); return 0;
        case USBDEVFS_SETCONFIGURATION: {
            const unsigned wanted = as<unsigned>(data);
            if (claimer_ != nullptr || bound_) return -EBUSY;
            return wanted <= 1 || wanted == ~0U ? 0 : -EINVAL;  // 0 and -1 leave the device unconfigured
        }
        case USBDEVFS_SETINTERFACE: {
            const auto& wanted = as<usbdevfs_setinterface>(data);
            return wanted.altsetting == 0 ? claim(client, wanted.interface) : -EINVAL;
        }
        case USBDEVFS_GET_SPEED: return USB_SPEED_FULL;
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

void UsbDevice::end(int status) {
    for (const Transfer& transfer : pending_) transfer.finish(status);
    completed_.splice(completed_.end(), pending_);
    update();
}

void UsbDevice::unplug() {
    const std::lock_guard lock(mutex_);
    gone_ = true;
    earlier_.notify_one();
    end(-ENODEV);
}

bool UsbDevice::steer(const Words& words) {
    const std::lock_guard lock(mutex_);
    return sim::steer(device_, words);
}

void UsbDevice::setLate(bool late) {
    const std::lock_guard lock(mutex_);
    late_ = late;
    if (!gone_) pump();
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
    // The kernel claims the interface for a client that has not.
    if (const long refusal = claim(client, 0); refusal != 0) return refusal;
    pending_.push_back(std::move(transfer));
    pump();
    return 0;
}

long UsbDevice::discard(UMockdevIoctlClient* client, std::uintptr_t address) {
    const auto found = std::ranges::find_if(pending_, [&](const Transfer& transfer) {
        return transfer.client == client && transfer.data->client_addr == address;
    });
    // A completed transfer keeps its bytes and is reaped with them.
    if (found == pending_.end()) return -EINVAL;
    const bool arrived = late_ && found->urb().endpoint == endpointIn && deliver(*found);
    found->finish(-ENOENT, arrived ? static_cast<std::size_t>(found->urb().actual_length) : 0);
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
    end(-ENOENT);
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
    for (Packet& arrived : splitter_.split()) {
        const Packet request = Device::meant(std::move(arrived));
        const auto data = device_.handle(request);
        if (data) {
            enqueue(Device::replyFrame(request.command, *data));
        } else if (verbose_ && !device_.knows(request.command)) {
            std::cerr << serial_ << " ! unknown command\n";
        }
    }
}

void UsbDevice::enqueue(ByteView frame) {
    if (verbose_) std::cerr << serial_ << " > " << hex(frame) << '\n';
    for (std::size_t from = 0; from < frame.size(); from += packetSize) {
        const ByteView piece = frame.subspan(from, std::min(packetSize, frame.size() - from));
        replies_.emplace_back(piece.begin(), piece.end()).resize(packetSize);
    }
}

bool UsbDevice::sendUnsolicited(int /*command*/, const Frame& frame) {
    if (gone_ || replies_.size() >= mostStreamed) return false;
    enqueue(*frame);
    return true;
}

// Whether the transfer is complete.
bool UsbDevice::serve(const Transfer& transfer) {
    if (transfer.urb().endpoint == endpointOut) {
        if (replies_.size() >= mostReplies) return false;
        receive(transfer.bytes());
        transfer.finish(0, transfer.bytes().size());
        return true;
    }
    return !late_ && deliver(transfer);
}

// Gives a transfer the next piece of the replies, if there is one.
bool UsbDevice::deliver(const Transfer& transfer) {
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
    if (hasRoom()) device_.tellRoom();
    update();
}

void UsbDevice::reset() {
    end(-ESHUTDOWN);
    replies_.clear();
    splitter_ = Splitter();
}

std::string UsbDevice::transfers() {
    const std::lock_guard lock(mutex_);
    std::ostringstream line;
    line << R"("count": )" << outCount_ << R"(, "out": )" << listOf(out_) << R"(, "detached": )"
         << (hasDriver_ && !bound_ ? "true" : "false") << R"(, "claimed": )" << (claimer_ != nullptr ? "[0]" : "[]")
         << R"(, "requests": )" << listOf(requests_);
    return line.str();
}

}  // namespace zvr::sim
