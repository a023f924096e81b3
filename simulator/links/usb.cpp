// zvr-sim-usb: USB models for the libusb of another process, without hardware or rights.
//
// A testbed of umockdev holds the files that a device has in /sys and /dev; its preload library shows them to the
// client, and passes each ioctl on a device's node to this program, which plays the kernel's part.
#include <arpa/inet.h>
#include <fcntl.h>
#include <glob.h>
#include <poll.h>
#include <spawn.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <iostream>
#include <sstream>
#include <variant>

#include "links/steering.h"
#include "links/usb_device.h"
#include "options.h"

namespace zvr::sim {

namespace {

constexpr const char* preloadLibrary = "libumockdev-preload.so.0";

struct BadRequest : std::invalid_argument {
    using std::invalid_argument::invalid_argument;
};

// Connects a device with the objects of the testbed, which outlive the calls of this program.
struct Handle {
    std::shared_ptr<UsbDevice> device;
    UMockdevIoctlClient* client;
};

void complete(UMockdevIoctlClient* client, long result) {
    umockdev_ioctl_client_complete(client, result < 0 ? -1 : result, result < 0 ? static_cast<int>(-result) : 0);
}

// The conflicting handle may just have been closed without its end having been noticed.
void answerLater(const std::shared_ptr<UsbDevice>& device, UMockdevIoctlClient* client) {
    struct Question {
        std::shared_ptr<UsbDevice> device;
        Ref<UMockdevIoctlClient> client;
    };
    constexpr guint milliseconds = 20;
    const std::unique_ptr<GSource, decltype(&g_source_unref)> source(g_timeout_source_new(milliseconds),
                                                                     g_source_unref);
    Ref<UMockdevIoctlClient> kept(UMOCKDEV_IOCTL_CLIENT(g_object_ref(client)));
    g_source_set_callback(
        source.get(),
        [](gpointer data) -> gboolean {
            const auto& question = *static_cast<Question*>(data);
            complete(question.client.get(), question.device->answer(question.client.get()));
            return G_SOURCE_REMOVE;
        },
        std::make_unique<Question>(Question{device, std::move(kept)}).release(),
        [](gpointer data) { const std::unique_ptr<Question> last(static_cast<Question*>(data)); });
    g_source_attach(source.get(), g_main_context_get_thread_default());
}

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
    device->note(umockdev_ioctl_client_get_request(client));
    const long result = device->answer(client);
    if (result == -EBUSY) {
        answerLater(device, client);
    } else {
        complete(client, result);
    }
    return TRUE;
}

// The attached devices, and the testbed that shows them.
class Bus {
public:
    Bus(bool driver, Outside outside, bool verbose)
        : testbed_(umockdev_testbed_new()), driver_(driver), outside_(std::move(outside)), verbose_(verbose) {
        const std::unique_ptr<char, decltype(&g_free)> root(umockdev_testbed_get_root_dir(testbed_.get()), g_free);
        root_ = root.get();
        constexpr std::size_t longest = 75;
        if (root_.size() > longest) throw std::runtime_error(root_ + " is too long a path for the sockets in it");
    }
    // Clients that outlive the bus see the devices removed.
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
        std::string node;
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
    const bool driver_;
    const Outside outside_;
    const bool verbose_;
    std::string root_;
    std::vector<Plugged> plugged_;
    unsigned addresses_ = 0;  // assigned so far; never reused
    unsigned events_ = 0;
};

void Bus::plug(std::string_view wanted) {
    const auto colon = wanted.find(':');
    const std::string name(wanted.substr(0, colon));
    const Model* model = findModel(name);
    if (model == nullptr) throw BadRequest("no model is called " + name);
    if (model->link != Link::usb) throw BadRequest(name + " is not reached over USB; try zvr-sim " + name);
    const unsigned count = addresses_;
    const std::string serial =
        colon == std::string_view::npos ? format("SIM%05u", count + 1) : std::string(wanted.substr(colon + 1));
    // It is written unescaped to JSON, to lines and to the wire.
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
                                          bus, address, usbVendor, usbProduct);
    Plugged one{std::make_shared<UsbDevice>(*model, serial, root_ + node, driver_, outside_, verbose_), path, node,
                properties};

    const Ref<UMockdevIoctlBase> handler(umockdev_ioctl_base_new());
    g_signal_connect_data(
        handler.get(), "handle-ioctl", G_CALLBACK(onIoctl),
        std::make_unique<std::shared_ptr<UsbDevice>>(one.device).release(),
        [](gpointer data, GClosure*) {
            const std::unique_ptr<std::shared_ptr<UsbDevice>> last(static_cast<std::shared_ptr<UsbDevice>*>(data));
        },
        GConnectFlags{});
    umockdev_testbed_attach_ioctl(testbed_.get(), node.c_str(), handler.get(), nullptr);
    ++addresses_;

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
    attribute("idProduct", format("%04x", usbProduct));
    attribute("idVendor", format("%04x", usbVendor));
    attribute("product", model->displayName);
    attribute("serial", serial);
    attribute("speed", 12);
    attribute("version", " 2.00");
    description << "H: descriptors=" << hex(usbDescriptors()) << '\n';
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
    // A client that finds no listener at this socket would exit.
    std::filesystem::remove(root_ + "/ioctl" + gone.node);
    umockdev_testbed_detach_ioctl(testbed_.get(), gone.node.c_str(), nullptr);
    announce(gone, "remove");
}

// Sends the event that udev would send. The testbed's own way to do it works only in a process that sees the testbed
// as its system; this one does not.
void Bus::announce(const Plugged& one, const char* action) {
    struct Header {  // libudev's
        std::array<char, 8> prefix{"libudev"};
        std::uint32_t magic = htonl(0xFEEDCAFE);
        std::uint32_t headerSize = sizeof(Header), offset = sizeof(Header), length = 0;
        // Hashes of "usb" and "usb_device", which the socket's filter looks at, and no tags.
        std::array<std::uint32_t, 4> filters{htonl(0x0577C5E5), htonl(0x27F8F50C), 0, 0};
    };
    std::string text = format("ACTION=%s\nSEQNUM=%u\nDEVPATH=", action, ++events_) + one.path + '\n' + one.properties;
    std::ranges::replace(text, '\n', '\0');
    Header header;
    header.length = static_cast<std::uint32_t>(text.size());
    const std::string message = std::string(reinterpret_cast<const char*>(&header), sizeof(header)) + text;

    // Each client that waits for events has a socket of this name.
    glob_t listeners{};
    if (glob((root_ + "/event[0-9]*").c_str(), GLOB_NOSORT, nullptr, &listeners) == 0) {
        const FileDescriptor socket(::socket(AF_UNIX, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
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
    Outside outside;
};

// Executes a line's command; returns the members of the answer.
std::string obey(Bus& bus, Words words) {
    if (words.size() < 2) throw BadRequest("no such request; --help lists them");
    const std::string verb = words[0], what = words[1];
    const std::string value = words.size() == 3 ? words[2] : "";
    if (verb == "plug" && words.size() == 2) {
        bus.plug(what);
    } else if (verb == "unplug" && words.size() == 2) {
        bus.unplug(what);
    } else if (verb == "transfers" && words.size() == 2) {
        return bus.find(what).transfers();
    } else if (verb == "late" && words.size() == 3) {
        bus.find(what).setLate(isOn(value));
    } else {
        words.erase(words.begin() + 1);
        if (!bus.find(what).steer(words)) throw BadRequest("no such request; --help lists them");
    }
    return {};
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

// Runs until a signal, or the end of the input or the command; returns the exit status.
int run(Bus& bus, const UsbOptions& options, const sigset_t& signals, const sigset_t& restored) {
    const FileDescriptor arrivals(signalfd(-1, &signals, SFD_CLOEXEC));
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
                const auto answer = [&](const Words& words) { return obey(bus, words); };
                std::cout << answerTo(input.substr(0, end), answer) << std::endl;
            }
        }
    }
}

constexpr const char* about =
    R"(The device side of USB models, for the libusb of a program, without hardware. With a COMMAND it runs it, so that it
finds the devices on its bus, and ends with its exit status. Without one it prints one line of JSON with what such a
program needs in its environment, and serves until SIGTERM or SIGINT.)";

constexpr const char* controls =
    R"(Without a COMMAND, lines on standard input change what there is; each is answered by a line of JSON:
  plug MODEL[:SERIAL]      connect another device
  unplug SERIAL            take one away
  late SERIAL on|off       let replies come just as a read is given up
  transfers SERIAL         tell what the device has got
With the serial number of a device behind the first word:
)";

// Parses the command line; returns the options or an exit status.
std::variant<UsbOptions, int> parseUsb(int argc, char** argv) {
    UsbOptions options;
    char** const end = argv + argc;
    char** const mark = std::find(argv, end, std::string_view("--"));
    if (mark != end) options.command.assign(mark + 1, end + 1);
    CLI::App app(about, "zvr-sim-usb");
    app.footer(std::string(controls) + steeringHelp);
    app.add_option("MODEL[:SERIAL]", options.devices, "the devices; behind -- the COMMAND and its arguments")
        ->type_name("");
    OptionGroup general(app, "Options");
    general.flag("--kernel-driver", options.driver, "a driver of the kernel has the devices until it is detached");
    general.flag("--stdin-stop", options.stopWithInput, "stop when standard input closes");
    general.flag("--verbose", options.verbose, "log what the devices get and answer on standard error");
    addSignalOptions(app, options.outside.signals, options.outside.peers);
    if (const std::optional<int> status = parse(app, static_cast<int>(mark - argv), argv)) return *status;
    const char* refusal = options.devices.empty()                     ? "a MODEL is wanted"
                          : mark != end && options.command.size() < 2 ? "a COMMAND is wanted after --"
                          : mark != end && options.stopWithInput      ? "--stdin-stop is not for a COMMAND"
                                                                      : nullptr;
    if (refusal == nullptr) return options;
    std::cerr << "zvr-sim-usb: " << refusal << '\n';
    return 2;
}

// A client may be killed during a request.
void logUnlessKilled(const gchar* domain, GLogLevelFlags level, const gchar* message, gpointer) {
    if (std::string_view(message).find("with open stream") == std::string_view::npos) {
        g_log_default_handler(domain, level, message, nullptr);
    }
}

int serve(const UsbOptions& options) {
    // A missing input counts as ended; its descriptor number must not be reused.
    if (fcntl(STDIN_FILENO, F_GETFD) < 0) open("/dev/null", O_RDONLY);
    g_log_set_handler(nullptr, G_LOG_LEVEL_CRITICAL, logUnlessKilled, nullptr);
    // Blocked before the testbed starts its thread, which inherits it. SIGPIPE means an output without a reader.
    sigset_t signals, restored;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGPIPE, SIGCHLD}) sigaddset(&signals, signal);
    sigprocmask(SIG_BLOCK, &signals, &restored);
    Bus bus(options.driver, options.outside, options.verbose);
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
    const auto parsed = zvr::sim::parseUsb(argc, argv);
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
