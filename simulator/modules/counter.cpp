// The pulse counters and the encoder: positions of 48 bits that follow what turns at their inputs.
#include <cmath>

#include "device/modules.h"
#include "modules/channels.h"

namespace zvr::sim {

namespace {

constexpr std::size_t positionWidth = 6;
constexpr std::uint64_t positionMask = (std::uint64_t{1} << 48) - 1;
constexpr double encoderSpeed = 100;  // counts in a second

// A position that follows a source while it is started.
class Tracker {
public:
    explicit Tracker(std::function<Oscillator()> source) : source_(std::move(source)) {}

    Stage stage() const { return stage_; }
    void enter(Stage stage) {
        follow();
        if (stage_ == Stage::closed) *this = Tracker(std::move(source_));
        stage_ = stage;
        seen_ = turns();
    }

    std::uint64_t position() {
        follow();
        return position_;
    }
    void setPosition(std::uint64_t position) {
        follow();
        position_ = position & positionMask;
    }

    double frequency() const { return stage_ == Stage::started ? source_().frequency() * factor_ : 0; }

    /// Counts in a turn of the source; below 0 they are taken away.
    int factor() const { return factor_; }
    void setFactor(int factor) {
        follow();
        factor_ = factor;
    }

    float window() const { return window_; }
    bool setWindow(float seconds) {
        if (!std::isfinite(seconds) || seconds <= 0) return false;
        window_ = seconds;
        return true;
    }

private:
    double turns() const { return std::floor(source_().turns()); }

    void follow() {
        if (stage_ != Stage::started) return;
        const double now = turns();
        const auto counts = static_cast<std::int64_t>(now - seen_) * factor_;
        position_ = (position_ + static_cast<std::uint64_t>(counts)) & positionMask;
        seen_ = now;
    }

    std::function<Oscillator()> source_;
    Stage stage_ = Stage::closed;
    std::uint64_t position_ = 0;
    double seen_ = 0;
    int factor_ = 1;
    float window_ = 1;
};

std::uint64_t positionOf(ByteView rest) {
    if (rest.size() != positionWidth) throw WrongLength(positionWidth, rest.size());
    std::uint64_t position = 0;
    for (const std::uint8_t byte : rest) position = position << 8 | byte;
    return position;
}

Bytes bytesOfPosition(std::uint64_t position) {
    Bytes data;
    appendBigEndian(data, position);
    data.erase(data.begin(), data.end() - positionWidth);
    return data;
}

Bytes bytesOfFloat(double value) {
    Bytes data;
    appendBigEndian(data, static_cast<float>(value));
    return data;
}

template <std::size_t Count>
void addReading(const Channels<Tracker, Count>& trackers, Command read, Command setValue, Command setWindow,
                Command getWindow) {
    trackers.onRead(read, positionWidth + sizeof(float), [](Tracker& tracker) {
        Bytes data = bytesOfPosition(tracker.position());
        appendBigEndian(data, static_cast<float>(tracker.frequency()));
        return data;
    });
    trackers.onChange(setValue, [](Tracker& tracker, ByteView rest) {
        tracker.setPosition(positionOf(rest));
        return true;
    });
    trackers.onChange(setWindow,
                      [](Tracker& tracker, ByteView rest) { return tracker.setWindow(readBigEndian<float>(rest)); });
    trackers.onRead(getWindow, sizeof(float), [](Tracker& tracker) { return bytesOfFloat(tracker.window()); });
}

}  // namespace

void addCounter(Device& device) {
    const auto source = [&device](std::size_t channel) {
        return Tracker([&device, channel] { return device.pulses(channel); });
    };
    const Channels<Tracker, 2> counters(device, Status::pulse, {source(0), source(1)});
    counters.onStages(PULSE_OPEN, PULSE_START, PULSE_STOP, PULSE_CLOSE);
    addReading(counters, PULSE_READ, PULSE_SET_VALUE, PULSE_SET_FRQ_WINDOW, PULSE_GET_FRQ_WINDOW);
    counters.onRead(PULSE_GET_VALUE, positionWidth,
                    [](Tracker& counter) { return bytesOfPosition(counter.position()); });
    // 0 counts rising edges, 1 falling ones, 2 both.
    counters.onChange(PULSE_SET_EDGE, [](Tracker& counter, ByteView rest) {
        const int edge = slice(rest, 0, 1)[0];
        if (edge > 2) return false;
        counter.setFactor(edge == 2 ? 2 : 1);
        return true;
    });
}

void addEncoder(Device& device) {
    const Channels<Tracker, 1> encoders(device, Status::encoder,
                                        {Tracker([wheel = Oscillator(encoderSpeed)] { return wheel; })});
    encoders.onStages(ENCODER_OPEN, ENCODER_START, ENCODER_STOP, ENCODER_CLOSE);
    addReading(encoders, ENCODER_READ, ENCODER_SET_VALUE, ENCODER_SET_FRQ_WINDOW, ENCODER_GET_FRQ_WINDOW);
    // 0 counts up, 1 down.
    encoders.onChange(ENCODER_SET_DIR, [](Tracker& encoder, ByteView rest) {
        const int direction = slice(rest, 0, 1)[0];
        if (direction > 1) return false;
        encoder.setFactor(direction == 1 ? -1 : 1);
        return true;
    });
    encoders.onRead(ENCODER_GET_DIR, 1,
                    [](Tracker& encoder) { return Bytes{static_cast<std::uint8_t>(encoder.factor() < 0)}; });
}

}  // namespace zvr::sim
