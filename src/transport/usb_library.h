// libusb-1.0, loaded at run time, so that it is needed only for USB devices.
#pragma once

#include <libusb.h>

#include <memory>
#include <string>
#include <system_error>

namespace zvr {

/// A failure of the USB layer; its code is the system's error number.
struct UsbError : std::system_error {
    explicit UsbError(int libusbCode);
    /// A transfer timed out.
    bool timedOut() const { return code() == std::errc::timed_out; }
};

/// The functions of a loaded library.
class UsbLibrary {
public:
    /// Null if there is no such library. Without a path the system's default is loaded.
    static std::shared_ptr<const UsbLibrary> load(const std::string& path = {});

    const std::string& path() const { return path_; }

// clang-format off
#define ZVR_USB_FUNCTIONS(X) \
    X(init) X(exit) X(get_device_list) X(free_device_list) X(get_device_descriptor) \
    X(get_config_descriptor) X(free_config_descriptor) X(get_bus_number) X(get_device_address) X(open) \
    X(close) X(get_string_descriptor_ascii) X(kernel_driver_active) X(detach_kernel_driver) \
    X(claim_interface) X(release_interface) X(bulk_transfer) X(alloc_transfer) X(free_transfer) X(submit_transfer) \
    X(cancel_transfer) X(handle_events_completed)
// clang-format on
#define ZVR_USB_FUNCTION(name) decltype(&libusb_##name) name = nullptr;
    ZVR_USB_FUNCTIONS(ZVR_USB_FUNCTION)
#undef ZVR_USB_FUNCTION

private:
    std::string path_;
};

}  // namespace zvr
