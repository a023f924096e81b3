// The pulse counters and the encoder: positions of 48 bits that follow what turns at their inputs.
#include <cmath>

#include "device/modules.h"
#include "modules/channels.h"

namespace zvr::sim {

namespace {

constexpr std::size_t positionWidth = 6;
constexpr std::uint64_t positionMask = (std::uint64_t{1} << 48) - 1;
constexpr double encoderSpeed = 100, outsideSpeed = 1000;  // counts in a second

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

std::uint64_t positionOf(Request& request) {
    std::uint64_t position = 0;
    for (const std::uint8_t byte : request.lastBytes(positionWidth)) position = position << 8 | byte;
    return position;
}

Bytes bytesOf(std::uint64_t position) {
    Bytes data = reply(position);
    data.erase(data.begin(), data.end() - positionWidth);
    return data;
}

template <std::size_t Count>
void addReading(const Channels<Tracker, Count>& trackers, Command read, Command setValue, Command setWindow,
                Command getWindow) {
    trackers.onRead(read, positionWidth + sizeof(float), [](Tracker& tracker) {
        const Bytes position = bytesOf(tracker.position());
        return reply(position, static_cast<float>(tracker.frequency()));
    });
    trackers.onChange(setValue, [](Tracker& tracker, Request r) { tracker.setPosition(positionOf(r)); });
    trackers.onChange(setWindow, [](Tracker& tracker, Request r) { return tracker.setWindow(r.last<float>()); });
    trackers.onRead(getWindow, sizeof(float), [](Tracker& tracker) { return tracker.window(); });
}

}  // namespace

void addCounter(Device& device) {
    // Without PWM outputs there is a signal from outside.
    const auto counterOf = [&device](std::size_t channel) {
        return Tracker([&device, channel, outside = Oscillator(outsideSpeed)] {
            return device.pulseSource ? device.pulseSource->pulses(channel) : outside;
        });
    };
    const Channels<Tracker, 2> counters(device, Status::pulse, {counterOf(0), counterOf(1)});
    counters.onOpenAndClose(PULSE_OPEN, PULSE_STOP, PULSE_CLOSE);
    counters.onStart(PULSE_START);
    addReading(counters, PULSE_READ, PULSE_SET_VALUE, PULSE_SET_FRQ_WINDOW, PULSE_GET_FRQ_WINDOW);
    counters.onRead(PULSE_GET_VALUE, positionWidth, [](Tracker& counter) { return bytesOf(counter.position()); });
    // 0 counts rising edges, 1 falling ones, 2 both.
    counters.onChange(PULSE_SET_EDGE, [](Tracker& counter, Request r) {
        const std::uint8_t edge = r.u8();
        if (edge > 2) return false;
        counter.setFactor(edge == 2 ? 2 : 1);
        return true;
    });
}

void addEncoder(Device& device) {
    const Channels<Tracker, 1> encoders(device, Status::encoder,
                                        {Tracker([wheel = Oscillator(encoderSpeed)] { return wheel; })});
    encoders.onOpenAndClose(ENCODER_OPEN, ENCODER_STOP, ENCODER_CLOSE);
    encoders.onStart(ENCODER_START);
    addReading(encoders, ENCODER_READ, ENCODER_SET_VALUE, ENCODER_SET_FRQ_WINDOW, ENCODER_GET_FRQ_WINDOW);
    // 0 counts up, 1 down.
    encoders.onChange(ENCODER_SET_DIR, [](Tracker& encoder, Request r) {
        const std::uint8_t direction = r.u8();
        if (direction > 1) return false;
        encoder.setFactor(direction == 1 ? -1 : 1);
        return true;
    });
    encoders.onRead(ENCODER_GET_DIR, 1, [](Tracker& encoder) { return std::uint8_t{encoder.factor() < 0}; });
}

}  // namespace zvr::sim
