// A device that costs next to nothing: it answers every request with a status of 0 and prepares its stream in advance,
// so that the measurement shows the cost of the reader.
//
//   stream_feeder rows_per_frame rows_per_second
//
// Prints one line of JSON with its address, as the simulator does, serves one connection after the other, and ends with
// its standard input. A run has as many rows of eight 16-bit channels as SET_AI_NUM_SAMPLES says; with 0 rows a second
// they are sent as fast as they are read.
#include <asio.hpp>
#include <chrono>
#include <cstdio>
#include <thread>

#include "core/wire/bytes.h"
#include "core/wire/commands.h"
#include "core/wire/frame.h"

namespace {

using asio::ip::tcp;
using Clock = std::chrono::steady_clock;
constexpr std::size_t rowBytes = 16;
constexpr std::size_t replyData = 11;  // the longest expected reply; longer than needed is harmless

class Feeder {
public:
    Feeder(std::size_t frameRows, double rate)
        : rate_(rate), frameRows_(frameRows), acceptor_(context_, {asio::ip::address_v4::loopback(), 0}) {
        // A slow wave over all codes, so that table look-ups are spread.
        constexpr std::size_t period = 8192;
        const std::size_t frames = std::max<std::size_t>(1, period / frameRows);
        for (std::size_t row = 0; row < frames * frameRows;) {
            zvr::Bytes data{0, 0};
            for (std::size_t i = 0; i < frameRows; ++i, ++row) {
                for (std::size_t column = 0; column < rowBytes / 2; ++column) {
                    zvr::appendBigEndian(data, static_cast<std::uint16_t>(row * 8 + column));
                }
            }
            const zvr::Bytes frame = zvr::buildFrame(zvr::START_AI_STREAMING, data);
            frameBytes_ = frame.size();
            frames_.insert(frames_.end(), frame.begin(), frame.end());
        }
    }

    int port() const { return acceptor_.local_endpoint().port(); }

    void serve() {
        for (;;) {
            tcp::socket link = acceptor_.accept();
            link.set_option(tcp::no_delay(true));
            try {
                for (;;) answer(link);
            } catch (const std::system_error&) {
                continue;  // the client has gone
            }
        }
    }

private:
    void answer(tcp::socket& link) {
        zvr::Bytes head(4);
        asio::read(link, asio::buffer(head));
        zvr::Bytes rest(std::size_t{head[1]} * 256 + head[2] + 1);
        asio::read(link, asio::buffer(rest));
        const auto command = static_cast<zvr::Command>(head[3]);
        if (command == zvr::SET_AI_NUM_SAMPLES) {
            rows_ = zvr::readBigEndian<std::uint32_t>(zvr::ByteView(rest).subspan(1, 4));
        }
        if (command == zvr::START_AI_STREAMING) return stream(link);
        asio::write(link, asio::buffer(zvr::buildFrame(command, zvr::Bytes(replyData))));
    }

    void stream(tcp::socket& link) {
        const Clock::time_point start = Clock::now();
        const std::size_t together = rate_ == 0 ? frames_.size() / frameBytes_ : 1;
        const std::size_t frames = rows_ / frameRows_;
        for (std::size_t sent = 0, place = 0; sent < frames;) {
            const std::size_t count = std::min({together, frames - sent, frames_.size() / frameBytes_ - place});
            if (rate_ != 0) {
                const std::chrono::duration<double> due(static_cast<double>((sent + 1) * frameRows_) / rate_);
                std::this_thread::sleep_until(start + std::chrono::duration_cast<Clock::duration>(due));
            }
            asio::write(link, asio::buffer(&frames_[place * frameBytes_], count * frameBytes_));
            sent += count;
            place = (place + count) % (frames_.size() / frameBytes_);
        }
    }

    const double rate_;
    const std::size_t frameRows_;
    std::size_t frameBytes_ = 0, rows_ = 0;
    zvr::Bytes frames_;
    asio::io_context context_;
    tcp::acceptor acceptor_;
};

}  // namespace

int main(int argc, char** argv) {
    try {
        if (argc != 3) throw std::invalid_argument("usage: stream_feeder rows_per_frame rows_per_second");
        Feeder feeder(std::stoul(argv[1]), std::stod(argv[2]));
        std::printf("{\"host\": \"127.0.0.1\", \"command_port\": %d}\n", feeder.port());
        std::fflush(stdout);
        std::thread([&feeder] { feeder.serve(); }).detach();
        while (std::getchar() != EOF) continue;
        std::_Exit(0);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "stream_feeder: %s\n", error.what());
        return 1;
    }
}
