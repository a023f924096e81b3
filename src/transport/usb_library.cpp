#include "transport/usb_library.h"

#include <dlfcn.h>

namespace zvr {

namespace {

#ifdef __APPLE__
constexpr const char* systemLibrary = "libusb-1.0.0.dylib";
#else
constexpr const char* systemLibrary = "libusb-1.0.so.0";
#endif

std::errc numberOf(int libusbCode) {
    switch (libusbCode) {
        case LIBUSB_ERROR_INVALID_PARAM: return std::errc::invalid_argument;
        case LIBUSB_ERROR_ACCESS: return std::errc::permission_denied;
        case LIBUSB_ERROR_NO_DEVICE: return std::errc::no_such_device;
        case LIBUSB_ERROR_NOT_FOUND: return std::errc::no_such_file_or_directory;
        case LIBUSB_ERROR_BUSY: return std::errc::device_or_resource_busy;
        case LIBUSB_ERROR_TIMEOUT: return std::errc::timed_out;
        case LIBUSB_ERROR_OVERFLOW: return std::errc::value_too_large;
        case LIBUSB_ERROR_PIPE: return std::errc::broken_pipe;
        case LIBUSB_ERROR_INTERRUPTED: return std::errc::interrupted;
        case LIBUSB_ERROR_NO_MEM: return std::errc::not_enough_memory;
        case LIBUSB_ERROR_NOT_SUPPORTED: return std::errc::function_not_supported;
        default: return std::errc::io_error;
    }
}

}  // namespace

UsbError::UsbError(int libusbCode) : std::system_error(std::make_error_code(numberOf(libusbCode))) {}

// A loaded library is never unloaded: its own threads may be running in it.
std::shared_ptr<const UsbLibrary> UsbLibrary::load(const std::string& path) {
    auto library = std::make_shared<UsbLibrary>();
    library->path_ = path.empty() ? systemLibrary : path;
    void* const loaded = ::dlopen(library->path_.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (loaded == nullptr) return nullptr;
    bool complete = true;
    const auto find = [&](auto& function, const char* name) {
        function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(::dlsym(loaded, name));
        complete = complete && function != nullptr;
    };
#define ZVR_USB_FIND(name) find(library->name, "libusb_" #name);
    ZVR_USB_FUNCTIONS(ZVR_USB_FIND)
#undef ZVR_USB_FIND
    return complete ? library : nullptr;
}

}  // namespace zvr
