// zvr-sim: the device side of a model.
#include <unistd.h>

#include <csignal>
#include <iostream>

#include "server.h"

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

int serve(const zvr::sim::Options& options) {
    // Before anything is opened, since the lowest free descriptor is taken: a missing input must be known as one.
    const int inputCopy = options.stopWithInput ? dup(STDIN_FILENO) : -1;
    asio::io_context context(1);
    zvr::sim::Device device(*options.model, options.identity, options.network);
    const zvr::sim::Server server(context, device, options);
    asio::signal_set signals(context, SIGTERM, SIGINT);
    signals.async_wait([&](std::error_code, int) { context.stop(); });
    asio::posix::stream_descriptor input(context);
    if (inputCopy >= 0) {
        input.assign(inputCopy);
        stopWithInput(context, input);
    } else if (options.stopWithInput) {
        context.stop();
    }
    std::cout << R"({"model": ")" << options.model->name << R"(", "name": ")" << options.model->displayName
              << R"(", "host": ")" << options.host << R"(", "command_port": )" << server.port() << R"(, "serial": ")"
              << options.identity.serial << R"(", "pid": )" << getpid() << "}" << std::endl;
    context.run();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const auto parsed = zvr::sim::parseOptions(argc, argv);
    if (const int* status = std::get_if<int>(&parsed)) return *status;
    const auto& options = std::get<zvr::sim::Options>(parsed);
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return serve(options);
    } catch (const std::system_error& failure) {
        std::cerr << "zvr-sim: cannot listen on " << options.host << ":" << options.port << ": " << failure.what()
                  << '\n';
        return 1;
    }
}
