// Runs the scheduler of a device on the thread of its connections.
#pragma once

#include <asio.hpp>

#include "device/scheduler.h"

namespace zvr::sim {

class Ticker {
public:
    Ticker(asio::io_context& context, Scheduler& scheduler) : timer_(context), scheduler_(scheduler) {
        scheduler_.attach([this] { arm(); });
        arm();
    }
    ~Ticker() { scheduler_.detach(); }
    Ticker(const Ticker&) = delete;
    Ticker& operator=(const Ticker&) = delete;

private:
    void arm() {
        const auto next = scheduler_.next();
        if (!next) return;
        timer_.expires_at(*next);
        timer_.async_wait([this](std::error_code stopped) {
            if (stopped) return;
            scheduler_.run();
            arm();
        });
    }

    asio::steady_timer timer_;
    Scheduler& scheduler_;
};

}  // namespace zvr::sim
