// A USB device as the kernel shows it to libusb: the ioctls on its node, and the endpoints behind them.
#pragma once

#include <linux/usbdevice_fs.h>
#include <umockdev.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <condition_variable>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <thread>

#include "core/wire/splitter.h"
#include "device/device.h"
#include "links/steering.h"

namespace zvr::sim {

constexpr std::uint16_t usbVendor = 0x0483, usbProduct = 0x5750;

/// The content of a device's descriptors file.
Bytes usbDescriptors();

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <class Object>
using Ref = std::unique_ptr<Object, Unref>;

class FileDescriptor {
public:
    explicit FileDescriptor(int fd) : fd_(fd) {
        if (fd < 0) throw std::system_error(errno, std::generic_category());
    }
    ~FileDescriptor() { close(fd_); }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int get() const { return fd_; }

private:
    int fd_;
};

inline std::string format(const char* pattern, auto... values) {
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(), pattern, values...);
    return text.data();
}

std::string hex(ByteView bytes);

/// The node of a device is a pipe. The kernel reports a usbfs node as writable while there is a transfer to reap; a
/// pipe is writable while it is not full, so that the same wait of the client works on it.
class Node {
public:
    explicit Node(const std::filesystem::path& path);
    void setReady(bool ready);

private:
    FileDescriptor pipe_;
};

/// A transfer of a client from its submission until it is reaped.
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
    /// Copies as many bytes as fit to the client, after the buffer's setup packet.
    std::size_t fill(ByteView source, std::size_t offset = 0) const {
        const std::size_t count = std::min(source.size(), bytes().size() - offset);
        std::copy_n(source.begin(), count, static_cast<std::uint8_t*>(urb().buffer) + offset);
        return count;
    }
};

/// The equipment at the lines of the devices.
struct Outside {
    Signals signals;
    Peers peers;
};

/// One emulated device. The testbed's thread passes the ioctls, the main thread the control lines, and a separate
/// thread runs the device's scheduler.
class UsbDevice : public FrameSink {
public:
    UsbDevice(const Model& model, const std::string& serial, const std::filesystem::path& node, bool driver,
              const Outside& outside, bool verbose);
    UsbDevice(const UsbDevice&) = delete;
    UsbDevice& operator=(const UsbDevice&) = delete;

    const std::string& serial() const { return serial_; }
    const Model& model() const { return device_.model(); }

    /// Records an ioctl that is no transfer.
    void note(unsigned long request);
    /// Answers an ioctl as the kernel does: a negative errno is a failure. Each open handle is a client.
    long answer(UMockdevIoctlClient* client);
    /// A client has closed its handle, or died.
    void vanished(UMockdevIoctlClient* client);

    /// Pending transfers end with the device; they can still be reaped.
    void unplug();
    /// Executes a line's command on the device; see links/steering.h.
    bool steer(const Words& words);
    /// Makes each reply arrive at the moment in which the client cancels its read.
    void setLate(bool late);
    /// The received transfers, as members of a JSON object.
    std::string transfers();

private:
    static constexpr std::size_t mostRemembered = 16, mostRequests = 64;
    // Requests of a client that reads no replies are not accepted, so that its queue stays bounded.
    static constexpr std::size_t mostReplies = 4096;
    // Unsolicited frames are dropped earlier, so that requests still get through.
    static constexpr std::size_t mostStreamed = mostReplies / 2, fewReplies = 128;
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
    void runScheduler(const std::stop_token& stopped);
    void receive(ByteView bytes);
    void enqueue(ByteView frame);
    bool sendUnsolicited(int command, const Frame& frame) override;
    bool hasRoom() const override { return claimer_ != nullptr && replies_.size() < fewReplies; }
    bool serve(const Transfer& transfer);
    bool deliver(const Transfer& transfer);
    void pump();
    void end(int status);
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
    bool late_ = false;
    UMockdevIoctlClient* claimer_ = nullptr;  // the only one that can have transfers pending
    Splitter splitter_;
    std::deque<Bytes> replies_;
    std::list<Transfer> pending_, completed_;
    std::size_t outCount_ = 0;
    std::deque<std::string> out_;
    std::deque<std::string> requests_;
    std::condition_variable_any earlier_;  // something is due before what the thread waits for
    std::jthread clockwork_;
};

}  // namespace zvr::sim
