// Runs the agenda of a device on the thread of its connections.
#pragma once

#include <asio.hpp>

#include "device/agenda.h"

namespace zvr::sim {

class Ticker {
public:
    Ticker(asio::io_context& context, Agenda& agenda) : timer_(context), agenda_(agenda) {
        agenda_.onEarlier = [this] { arm(); };
        arm();
    }
    ~Ticker() {
        agenda_.onEarlier = [] {};
    }
    Ticker(const Ticker&) = delete;
    Ticker& operator=(const Ticker&) = delete;

private:
    void arm() {
        const auto next = agenda_.next();
        if (!next) return;
        timer_.expires_at(*next);
        timer_.async_wait([this](std::error_code stopped) {
            if (stopped) return;
            agenda_.run();
            arm();
        });
    }

    asio::steady_timer timer_;
    Agenda& agenda_;
};

}  // namespace zvr::sim
