// The client of a USB device: frames over two bulk endpoints.
#pragma once

#include <future>
#include <optional>

#include "transport/client.h"
#include "transport/link_end.h"
#include "transport/usb_library.h"

namespace zvr {

/// What a USB device tells about itself.
struct UsbIdentity {
    int bus = 0, address = 0;
    std::string serialNumber, product;
};

/// All devices of this family that are attached and may be opened. Without a library there are none.
std::vector<UsbIdentity> listUsbDevices(const std::shared_ptr<const UsbLibrary>& library);

class UsbClient final : public Client {
public:
    /// Opens the first device, or the one with this serial number, and takes it from a driver of the kernel. Throws
    /// Failure USBConnectionError if there is none, and UsbError if it may not be opened.
    UsbClient(const std::shared_ptr<const UsbLibrary>& library, std::optional<std::string> serialNumber);
    ~UsbClient() override;

    const UsbIdentity& identity() const { return identity_; }
    int configuration() const { return configuration_; }
    int interfaceNumber() const { return interface_; }
    /// Ready when the device has been let go of, which is when the last thread that uses it has left.
    std::shared_future<void> closed() const { return closed_; }

    /// Waits a millisecond at most; idle if nothing came. Throws UsbError.
    ReadStatus read(Bytes& buffer, const InterruptCheck& onWait = {}) override;
    /// The receive thread waits longer, since each read that finds nothing costs it as much as one that does; a
    /// caller's read comes before it. Throws UsbError, of a caller also where nothing came.
    ReadStatus receiveAs(Reader reader, std::size_t length, std::vector<Packet>& packets,
                         const InterruptCheck& onWait) override;
    bool isShared() const override { return true; }
    std::optional<std::error_code> loss() const override;
    /// As the receive thread's read.
    std::optional<ReadStatus> receiveFor(const Wake* wake, Deadline until, std::size_t length,
                                         std::vector<Packet>& packets) override;
    void interrupt() noexcept override;
    /// One transfer of at least 64 bytes: zeros follow a shorter frame, which the device drops as noise. Throws
    /// UsbError.
    bool send(ByteView bytes, Deadline deadline, const InterruptCheck& onWait = {}) override;
    void close() noexcept override;

    class Handle;

    FailureId failure() const override { return FailureId::USBConnectionError; }

private:
    std::shared_ptr<Handle> opened() const;
    /// Runs a transfer of an open handle, and tells if the device turns out to be gone.
    template <class Transfer>
    auto notingLoss(Transfer transfer);
    ReadStatus readInto(Reader reader, unsigned milliseconds, std::size_t length, std::vector<Packet>& packets);

    UsbIdentity identity_;
    int configuration_ = 0, interface_ = 0;
    std::shared_future<void> closed_;
    mutable std::mutex mutex_;
    std::shared_ptr<Handle> handle_;
    LinkEnd end_;
};

}  // namespace zvr
