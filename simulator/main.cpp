// zvr-sim: the device side of a model.
#include <unistd.h>

#include <csignal>
#include <iostream>

#include "device/ticker.h"
#include "links/discovery.h"
#include "links/serial.h"
#include "links/server.h"

namespace {

// Stops the context when standard input ends.
void stopWithInput(asio::io_context& context, asio::posix::stream_descriptor& input) {
    static char buffer[64];
    input.async_read_some(asio::buffer(buffer), [&](std::error_code error, std::size_t) {
        if (error) {
            context.stop();
        } else {
            stopWithInput(context, input);
        }
    });
}

// Why these options cannot be served; empty if they can.
std::string refusalOf(const zvr::sim::Options& options) {
    using zvr::sim::Link;
    const std::string name(options.model->name);
    const Link link = options.model->link;
    if (link == Link::usb && !options.tcp) {
        return name + " is reached over USB: zvr-sim-usb simulates it, and --tcp serves its frames without USB";
    }
    if (link == Link::serial && options.discovery) return name + " has no network: --discovery is not for it";
    if (link != Link::serial && !options.link.empty()) return name + " has no serial port: --link is not for it";
    return {};
}

// The device behind the link of its model.
class Front {
public:
    Front(asio::io_context& context, zvr::sim::Device& device, const zvr::sim::Options& options) {
        if (options.model->link == zvr::sim::Link::serial) {
            description_ = line_.emplace(context, device, options).description();
        } else {
            description_ = server_.emplace(context, device, options).description();
        }
        if (options.discovery) discovery_.emplace(context, device, options.verbose);
    }

    /// Where it is reached, as members of a JSON object.
    const std::string& description() const { return description_; }

private:
    std::optional<zvr::sim::Server> server_;
    std::optional<zvr::sim::SerialLine> line_;
    std::optional<zvr::sim::Discovery> discovery_;
    std::string description_;
};

int serve(const zvr::sim::Options& options) {
    // Before anything is opened, since the lowest free descriptor is taken: a missing input must be known as one.
    const int inputCopy = options.stopWithInput ? dup(STDIN_FILENO) : -1;
    asio::io_context context(1);
    zvr::sim::Device device(*options.model, options.identity, options.network, options.peers);
    device.signals = options.signals;
    device.pace = options.pace;
    device.tracks = options.tracks;
    const zvr::sim::Ticker ticker(context, device.scheduler);
    const Front front(context, device, options);
    asio::signal_set signals(context, SIGTERM, SIGINT);
    signals.async_wait([&](std::error_code, int) { context.stop(); });
    asio::posix::stream_descriptor input(context);
    if (inputCopy >= 0) {
        input.assign(inputCopy);
        stopWithInput(context, input);
    } else if (options.stopWithInput) {
        context.stop();
    }
    std::cout << R"({"model": ")" << options.model->name << R"(", "name": ")" << options.model->displayName << R"(", )"
              << front.description() << R"(, "serial": ")" << options.identity.serial << R"(", "pid": )" << getpid()
              << "}" << std::endl;
    context.run();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const auto parsed = zvr::sim::parseOptions(argc, argv);
    if (const int* status = std::get_if<int>(&parsed)) return *status;
    const auto& options = std::get<zvr::sim::Options>(parsed);
    if (const std::string refusal = refusalOf(options); !refusal.empty()) {
        std::cerr << "zvr-sim: " << refusal << '\n';
        return 2;
    }
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return serve(options);
    } catch (const std::exception& failure) {
        std::cerr << "zvr-sim: " << failure.what() << '\n';
        return 1;
    }
}
