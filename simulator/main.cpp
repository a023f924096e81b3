// zvr-sim: the device side of a model.
#include <poll.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <iostream>
#include <thread>

#include "device/ticker.h"
#include "links/discovery.h"
#include "links/serial.h"
#include "links/server.h"
#include "links/steering.h"

namespace {

// Answers the lines of standard input, and reports its end. It is read by a thread, since non-blocking mode would also
// apply to the shell's terminal.
class Input {
public:
    using Answer = std::function<std::string(const std::string& line)>;

    Input(asio::io_context& context, int descriptor, Answer answer, std::function<void()> atEnd)
        : context_(context), descriptor_(descriptor), answer_(std::move(answer)), atEnd_(std::move(atEnd)) {
        asio::connect_pipe(stopped_, stopping_);
        reader_ = std::thread([this] { read(); });
    }
    ~Input() {
        std::error_code ignored;
        asio::write(stopping_, asio::buffer("", 1), ignored);
        reader_.join();
    }
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

private:
    void read() {
        std::string text;
        std::array<char, 512> buffer{};
        std::array<pollfd, 2> waits{{{descriptor_, POLLIN, 0}, {stopped_.native_handle(), POLLIN, 0}}};
        ssize_t count = descriptor_ < 0 ? 0 : 1;
        while (count > 0) {
            if (poll(waits.data(), waits.size(), -1) < 0) continue;
            if (waits[1].revents != 0) return;
            count = ::read(descriptor_, buffer.data(), buffer.size());
            if (count > 0) text.append(buffer.data(), static_cast<std::size_t>(count));
            for (std::size_t end; (end = text.find('\n')) != std::string::npos; text.erase(0, end + 1)) {
                asio::post(context_, [this, line = text.substr(0, end)] { std::cout << answer_(line) << std::endl; });
            }
        }
        asio::post(context_, atEnd_);
    }

    asio::io_context& context_;
    const int descriptor_;
    const Answer answer_;
    const std::function<void()> atEnd_;
    asio::readable_pipe stopped_{context_};
    asio::writable_pipe stopping_{context_};
    std::thread reader_;
};

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

    /// Its address, as members of a JSON object.
    const std::string& description() const { return description_; }

    void cut() {
        if (line_) line_->cut();
        if (server_) server_->cut();
    }

private:
    std::optional<zvr::sim::Server> server_;
    std::optional<zvr::sim::SerialLine> line_;
    std::optional<zvr::sim::Discovery> discovery_;
    std::string description_;
};

int serve(const zvr::sim::Options& options) {
    // Before anything is opened, since the lowest free descriptor is taken: a missing input must be known as one.
    const int inputCopy = dup(STDIN_FILENO);
    asio::io_context context(1);
    zvr::sim::Device device(*options.model, options.identity, options.network, options.peers);
    device.signals = options.signals;
    device.pace = options.pace;
    device.tracks = options.tracks;
    const zvr::sim::Ticker ticker(context, device.scheduler);
    Front front(context, device, options);
    asio::signal_set signals(context, SIGTERM, SIGINT);
    signals.async_wait([&](std::error_code, int) { context.stop(); });
    std::cout << R"({"model": ")" << options.model->name << R"(", "name": ")" << options.model->displayName << R"(", )"
              << front.description() << R"(, "serial": ")" << options.identity.serial << R"(", "pid": )" << getpid()
              << "}" << std::endl;
    const auto obey = [&](const zvr::sim::Words& words) {
        if (words == zvr::sim::Words{"cut"}) {
            front.cut();
        } else if (!zvr::sim::steer(device, words)) {
            throw std::invalid_argument("no such request; --help lists them");
        }
        return std::string();
    };
    const Input input(
        context, inputCopy, [&](const std::string& line) { return zvr::sim::answerTo(line, obey); },
        [&] {
            if (options.stopWithInput) context.stop();
        });
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
    // In the background of a terminal its input ends, instead of stopping the program.
    std::signal(SIGTTIN, SIG_IGN);
    try {
        return serve(options);
    } catch (const std::exception& failure) {
        std::cerr << "zvr-sim: " << failure.what() << '\n';
        return 1;
    }
}
