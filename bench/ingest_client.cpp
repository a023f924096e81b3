// The limit of acquisition: one thread that reads from the socket, finds the frames by their lengths and converts the
// samples directly into their destination.
//
//   ingest_client host port rows
//
// Prepares a run of that many rows of eight channels, starts it, and prints one line of JSON: seconds from the start to
// the last row, processor seconds of these, and the sum of all values.
#include <asio.hpp>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <numeric>

#include "core/engine/scale.h"
#include "core/wire/commands.h"
#include "core/wire/frame.h"

namespace {

using asio::ip::tcp;
constexpr std::size_t channels = 8, headBytes = 6, tailBytes = 2;  // port and chip select belong to the head
constexpr double ratio = 10.0 / 32768;

double processorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

class Client {
public:
    Client(const std::string& host, const std::string& port) : socket_(context_) {
        asio::connect(socket_, tcp::resolver(context_).resolve(tcp::v4(), host, port));
        socket_.set_option(tcp::no_delay(true));
    }

    void exchange(zvr::Command command, const zvr::Bytes& data) {
        asio::write(socket_, asio::buffer(zvr::buildFrame(command, data)));
        nextFrame();
        taken_ += frameBytes_;
    }

    void run(std::size_t rows) {
        const zvr::RowLayout layout = zvr::RowLayout::scaled16(channels, ratio);
        std::vector<double> values(rows * channels);
        const auto begin = std::chrono::steady_clock::now();
        const double spent = processorSeconds();
        asio::write(socket_, asio::buffer(zvr::buildFrame(zvr::START_AI_STREAMING, zvr::Bytes{0})));
        for (std::size_t row = 0; row < rows; taken_ += frameBytes_) {
            nextFrame();
            const std::size_t count = std::min((frameBytes_ - headBytes - tailBytes) / layout.rowBytes(), rows - row);
            zvr::convertRows(layout, &buffer_[taken_ + headBytes], count, &values[row * channels], channels);
            row += count;
        }
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
        std::printf("{\"seconds\": %.6f, \"cpu\": %.6f, \"sum\": %.4f}\n", seconds.count(), processorSeconds() - spent,
                    std::accumulate(values.begin(), values.end(), 0.0));
    }

private:
    // Reads until the next frame is complete.
    void nextFrame() {
        for (;;) {
            const std::size_t have = filled_ - taken_;
            if (have >= 3) {
                frameBytes_ = std::size_t{buffer_[taken_ + 1]} * 256 + buffer_[taken_ + 2] + 5;
                if (have >= frameBytes_) return;
            }
            std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(taken_),
                      buffer_.begin() + static_cast<std::ptrdiff_t>(filled_), buffer_.begin());
            filled_ -= std::exchange(taken_, 0);
            filled_ += socket_.read_some(asio::buffer(buffer_) + filled_);
        }
    }

    asio::io_context context_;
    tcp::socket socket_;
    std::vector<std::uint8_t> buffer_ = std::vector<std::uint8_t>(1 << 17);
    std::size_t filled_ = 0, taken_ = 0, frameBytes_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
    try {
        if (argc != 4) throw std::invalid_argument("usage: ingest_client host port rows");
        const auto rows = static_cast<std::uint32_t>(std::stoul(argv[3]));
        Client client(argv[1], argv[2]);
        const auto byteOf = [&](int shift) { return static_cast<std::uint8_t>(rows >> shift); };
        client.exchange(zvr::SET_AI_MODE, {0, 1});
        client.exchange(zvr::SET_AI_NUM_SAMPLES, {0, byteOf(24), byteOf(16), byteOf(8), byteOf(0)});
        client.exchange(zvr::OPEN_AI_STREAMING, {0});
        client.run(rows);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "ingest_client: %s\n", error.what());
        return 1;
    }
    return 0;
}
