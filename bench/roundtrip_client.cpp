// The round trip that is the unit of all other measurements: one thread, plain blocking calls, no pools.
//
//   roundtrip_client [--cpu K] [host] port
//
// Sends the request for the serial number and waits for its reply, as often as standard input asks: for each line
// `run N`, one line of N round-trip times in nanoseconds. So a harness can alternate between this client and others.
#include <pthread.h>

#include <asio.hpp>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <iostream>

#include "core/wire/commands.h"
#include "core/wire/constants.h"
#include "core/wire/splitter.h"

namespace {

using asio::ip::tcp;

void pinTo(int cpu) {
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(static_cast<std::size_t>(cpu), &set);
    const int error = pthread_setaffinity_np(pthread_self(), sizeof set, &set);
    if (error != 0) throw std::system_error(error, std::generic_category(), "--cpu");
}

int numberIn(std::string_view text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) {
        throw std::invalid_argument("not a number: " + std::string(text));
    }
    return number;
}

void exchange(tcp::socket& socket, zvr::Splitter& splitter, const zvr::Bytes& request, zvr::Bytes& buffer) {
    asio::write(socket, asio::buffer(request));
    for (;;) {
        const std::size_t count = socket.read_some(asio::buffer(buffer));
        splitter.append(zvr::ByteView(buffer).first(count));
        for (const zvr::Packet& packet : splitter.split()) {
            if (packet.command == zvr::GET_SERIAL_NUMBER) return;
        }
    }
}

void run(const std::string& host, int port) {
    asio::io_context context;
    tcp::socket socket(context);
    asio::connect(socket, tcp::resolver(context).resolve(tcp::v4(), host, std::to_string(port)));
    socket.set_option(tcp::no_delay(true));
    const zvr::Bytes request = zvr::buildFrame(zvr::GET_SERIAL_NUMBER, {});
    zvr::Bytes buffer(zvr::TCP_PKT_LENGTH_MAX);
    zvr::Splitter splitter;
    std::vector<std::chrono::nanoseconds> times;
    for (std::string line; std::getline(std::cin, line);) {
        if (!line.starts_with("run ")) throw std::invalid_argument("not a batch: " + line);
        times.resize(static_cast<std::size_t>(numberIn(std::string_view(line).substr(4))));
        for (auto& time : times) {
            const auto begin = std::chrono::steady_clock::now();
            exchange(socket, splitter, request, buffer);
            time = std::chrono::steady_clock::now() - begin;
        }
        for (std::size_t i = 0; i < times.size(); ++i) std::cout << (i == 0 ? "" : " ") << times[i].count();
        std::cout << std::endl;
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        std::vector<std::string_view> arguments(argv + 1, argv + argc);
        if (arguments.size() >= 2 && arguments[0] == "--cpu") {
            pinTo(numberIn(arguments[1]));
            arguments.erase(arguments.begin(), arguments.begin() + 2);
        }
        if (arguments.empty() || arguments.size() > 2) {
            std::fprintf(stderr, "usage: roundtrip_client [--cpu K] [host] port\n");
            return 2;
        }
        run(arguments.size() == 2 ? std::string(arguments[0]) : "127.0.0.1", numberIn(arguments.back()));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "roundtrip_client: %s\n", error.what());
        return 1;
    }
    return 0;
}
