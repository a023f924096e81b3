// The client of a USB device: frames over two bulk endpoints.
#pragma once

#include <future>
#include <optional>

#include "transport/client.h"
#include "transport/link_end.h"
#include "transport/usb_library.h"

namespace zvr {

/// How a USB device identifies itself.
struct UsbIdentity {
    int bus = 0, address = 0;
    std::string serialNumber, product;
};

/// All devices of this family that are attached and may be opened. Without a library there are none.
std::vector<UsbIdentity> listUsbDevices(const std::shared_ptr<const UsbLibrary>& library);

class UsbClient final : public Client {
public:
    /// Opens the first device, or the one with this serial number, and detaches a kernel driver from it. Throws Failure
    /// USBConnectionError if there is none, and UsbError if opening is not permitted.
    UsbClient(const std::shared_ptr<const UsbLibrary>& library, std::optional<std::string> serialNumber);
    ~UsbClient() override;

    const UsbIdentity& identity() const { return identity_; }
    int configuration() const { return configuration_; }
    int interfaceNumber() const { return interface_; }
    /// Ready when the device is released, after its last user has left.
    std::shared_future<void> closed() const { return closed_; }

    /// Waits a millisecond at most; idle if nothing arrived. Throws UsbError.
    ReadStatus read(Bytes& buffer, const InterruptCheck& onWait = {}) override;
    /// The receive thread waits longer, since an empty read costs as much as any other; callers' reads go first. Throws
    /// UsbError, for a caller also if nothing arrived.
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
    /// Runs a transfer of an open handle, and reports the loss if the device is gone.
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
